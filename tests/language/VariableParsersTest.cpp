#include <gtest/gtest.h>

#include <unicode/calendar.h>

#include <memory>

#include "language/ContentSearchFlag.h"
#include "language/DateCommandWhat.h"
#include "language/DateCommandWhen.h"
#include "language/FileSizeArgs.h"
#include "language/ScriptTarget.h"
#include "language/TimeUnit.h"
#include "language/VariableParsers.h"

namespace quester {
namespace {

std::vector<SentenceComponent> words(std::string_view text) {
    return SentenceComponent::parseWords(text);
}

template <typename T>
std::optional<std::pair<T, int>> read(std::optional<VariableParserResult> (*parser)(std::span<const SentenceComponent>),
                                      std::string_view text) {
    const auto input = words(text);
    const auto result = parser(input);
    if (!result) return std::nullopt;
    return std::make_pair(std::any_cast<T>(result->value), result->numberOfConsumedWords);
}

std::tuple<int, int, int> localDay(Date date) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Calendar> calendar(icu::Calendar::createInstance(status));
    calendar->setTime(
        static_cast<UDate>(std::chrono::duration_cast<std::chrono::milliseconds>(date.time_since_epoch()).count()),
        status);
    return {calendar->get(UCAL_YEAR, status), calendar->get(UCAL_MONTH, status) + 1, calendar->get(UCAL_DATE, status)};
}

VariableSources userLists() {
    VariableSources sources;
    sources.rememberedFolders = [] {
        return std::vector<std::pair<std::string, std::string>>{{"Desktop", "/home/u/Desktop/"}};
    };
    sources.scriptPaths = [] { return std::vector<std::string>{"/s/Tidy Up Files.sh", "/s/mail.sh"}; };
    sources.shortcutNames = [] { return std::vector<std::string>{"music", "Music Quiz"}; };
    sources.knownTags = [] { return std::vector<std::string>{"Red", "Dark Red", "Blue"}; };
    return sources;
}

TEST(VariableParsers, StringAndRegex) {
    const auto word = read<SentenceComponent>(stringVariable, "\"Q4 forecast\" x");
    ASSERT_TRUE(word);
    EXPECT_EQ(word->first.textOriginalCase, "Q4 forecast");
    EXPECT_EQ(word->second, 1);
    EXPECT_FALSE(stringVariable({}));
    EXPECT_TRUE(read<SentenceComponent>(regexVariable, "^rep.*\\.pdf$"));
    EXPECT_FALSE(regexVariable(words("a(b")));
    EXPECT_FALSE(regexVariable(words("[z-a]")));
}

TEST(VariableParsers, TypeWords) {
    EXPECT_EQ(read<std::string>(utiVariable, "image")->first, "image");
    EXPECT_EQ(read<std::string>(utiVariable, "public.data")->first, "public.data");
    EXPECT_EQ(read<std::string>(utiVariable, "docx")->first, "docx");
    EXPECT_FALSE(utiVariable(words("folder")));
    EXPECT_FALSE(utiVariable(words("ima"))) << "a completion is still open";
    EXPECT_EQ(utiCompletor(words("spread")), "spreadsheet");
    EXPECT_FALSE(utiCompletor(words("pdf")));
}

TEST(VariableParsers, ExtensionDropsThePoint) {
    EXPECT_EQ(read<std::string>(extensionVariable, ".PDF"), std::make_pair(std::string("PDF"), 1));
    EXPECT_FALSE(extensionVariable(words("pdf")));
    EXPECT_FALSE(extensionVariable(words(".")));
}

TEST(VariableParsers, Numbers) {
    EXPECT_EQ(read<int>(integerVariable, "20")->first, 20);
    EXPECT_EQ(read<int>(integerVariable, "-3")->first, -3);
    EXPECT_EQ(read<int>(integerVariable, "+7")->first, 7);
    EXPECT_EQ(read<int>(integerVariable, "twenty")->first, 20);
    EXPECT_EQ(read<int>(integerVariable, "twenty-five")->first, 25);
    EXPECT_FALSE(integerVariable(words("2.5")));
    EXPECT_FALSE(integerVariable(words("12abc")));
    EXPECT_FALSE(integerVariable(words("99999999999")));
    EXPECT_EQ(read<int>(yearVariable, "1970")->first, 1970);
    EXPECT_FALSE(yearVariable(words("1969")));
    EXPECT_FALSE(yearVariable(words("3000")));
    EXPECT_FALSE(yearVariable(words("+2020")));
    EXPECT_EQ(read<int>(dayVariable, "31")->first, 31);
    EXPECT_FALSE(dayVariable(words("0")));
    EXPECT_FALSE(dayVariable(words("32")));
}

TEST(VariableParsers, FileSizeWithAndWithoutBlank) {
    EXPECT_EQ(read<FileSizeArgs>(fileSizeVariable, "10mb"), std::make_pair(FileSizeArgs{10, SizeUnits::megabytes}, 1));
    EXPECT_EQ(read<FileSizeArgs>(fileSizeVariable, "10 MB x"),
              std::make_pair(FileSizeArgs{10, SizeUnits::megabytes}, 2));
    EXPECT_EQ(read<FileSizeArgs>(fileSizeVariable, "1.5gb"),
              std::make_pair(FileSizeArgs{1.5, SizeUnits::gigabytes}, 1));
    EXPECT_EQ(read<FileSizeArgs>(fileSizeVariable, "1024 bytes"),
              std::make_pair(FileSizeArgs{1024, SizeUnits::bytes}, 2));
    EXPECT_EQ(read<FileSizeArgs>(fileSizeVariable, "twenty kilobytes"),
              std::make_pair(FileSizeArgs{20, SizeUnits::kilobytes}, 2));
    EXPECT_EQ(read<FileSizeArgs>(fileSizeVariable, "twenty five k"),
              std::make_pair(FileSizeArgs{25, SizeUnits::kilobytes}, 3));
    EXPECT_FALSE(fileSizeVariable(words("twenty"))) << "a number in words alone";
    EXPECT_FALSE(fileSizeVariable(words("twenty apples")));
    EXPECT_FALSE(fileSizeVariable(words("10 byte"))) << "byte alone is no unit";
    EXPECT_FALSE(fileSizeVariable(words("mb")));
    EXPECT_FALSE(fileSizeVariable(words("10")));
    const auto spelled = read<FileSizeArgs>(fileSizeVariable, "1.1 mb");
    EXPECT_EQ(spelled->first.value, static_cast<double>(1.1F))
        << "a number read word by word is held as a 32-bit float";
}

TEST(VariableParsers, SizeUnitNames) {
    EXPECT_EQ(sizeUnitsFromString("YB"), SizeUnits::yottabyte);
    EXPECT_EQ(sizeUnitsFromString("k"), SizeUnits::kilobytes);
    EXPECT_EQ(sizeUnitsFromString("megabyte"), SizeUnits::megabytes);
    EXPECT_FALSE(sizeUnitsFromString("byte"));
    EXPECT_FALSE(sizeUnitsFromString(""));
    for (int i = 0; i <= static_cast<int>(SizeUnits::yottabyte); ++i) {
        const auto units = static_cast<SizeUnits>(i);
        EXPECT_EQ(sizeUnitsFromString(toString(units)), units);
    }
}

TEST(VariableParsers, DateWords) {
    EXPECT_EQ(read<DateCommandWhat>(dateTypeVariable, "Created"), std::make_pair(DateCommandWhat::creationDate, 1));
    EXPECT_EQ(read<DateCommandWhat>(dateTypeVariable, "edited"), std::make_pair(DateCommandWhat::modificationDate, 1));
    EXPECT_EQ(read<DateCommandWhat>(dateTypeVariable, "today"), std::make_pair(DateCommandWhat::modificationDate, 0));
    EXPECT_FALSE(dateTypeVariable({}));
    EXPECT_EQ(dateTypeCompletor(words("cre")), "created");
    EXPECT_EQ(read<TimeUnit>(timeUnitVariable, "weeks")->first, TimeUnit::weekOfYear);
    EXPECT_FALSE(timeUnitVariable(words("fortnight")));
    EXPECT_EQ(read<DateCommandWhen>(fixedNamedTimeRangeVariable, "yesterday")->first.when, WhenType::yesterday);
    EXPECT_FALSE(fixedNamedTimeRangeVariable(words("ever")));
    EXPECT_EQ(read<int>(monthVariable, "march")->first, 3);
    EXPECT_EQ(read<int>(monthVariable, "dec")->first, 12);
    EXPECT_FALSE(monthVariable(words("marc")));
    EXPECT_EQ(monthCompletor(words("septem")), "september");
    EXPECT_EQ(monthCompletor(words("in octo")), "october") << "the second word is completed when there is one";
}

TEST(VariableParsers, FormattedDateIsALocalMidnight) {
    const auto date = read<DateCommandWhen>(formattedDateVariable, "2021-04-13");
    ASSERT_TRUE(date);
    EXPECT_EQ(date->first.when, WhenType::specificDay);
    ASSERT_TRUE(date->first.specificDay);
    EXPECT_EQ(localDay(*date->first.specificDay), std::make_tuple(2021, 4, 13));
    EXPECT_FALSE(formattedDateVariable(words("2016")));
    EXPECT_FALSE(formattedDateVariable(words("today")));
}

TEST(VariableParsers, ContentSearchOptionsInOrderOnce) {
    using Flag = ContentSearchFlag;
    using Flags = std::vector<Flag>;
    EXPECT_EQ(read<Flags>(contentSearchVariable, "whole words use OCR x"),
              std::make_pair(Flags{Flag::wholeWords, Flag::useOCR}, 4));
    EXPECT_EQ(read<Flags>(contentSearchVariable, "all files all words"), std::make_pair(Flags{Flag::allFiles}, 2))
        << "never back";
    EXPECT_EQ(read<Flags>(contentSearchVariable, "bigger than 1mb"), std::make_pair(Flags{}, 0));
    EXPECT_EQ(read<Flags>(contentSearchVariable, "\"case sensitive\""), std::make_pair(Flags{Flag::caseSensitive}, 1));
    EXPECT_TRUE(contentSearchVariable({})) << "no options is still an answer";
    EXPECT_EQ(contentSearchFlagFromName("useOCR"), Flag::useOCR);
    EXPECT_FALSE(contentSearchFlagFromName("ocr"));
}

TEST(VariableParsers, VarArgTakesAllThatRemain) {
    const auto all = read<std::vector<SentenceComponent>>(varArgVariable, "a b c");
    ASSERT_TRUE(all);
    EXPECT_EQ(all->first.size(), 3U);
    EXPECT_EQ(all->second, 3);
    const auto none = varArgVariable({});
    ASSERT_TRUE(none);
    EXPECT_FALSE(none->value.has_value());
    EXPECT_EQ(none->numberOfConsumedWords, 0);
}

TEST(VariableParsers, UserListsComeFromTheSources) {
    const VariableSources sources = userLists();
    const auto folder = rememberedVariable(words("desktop"), sources);
    ASSERT_TRUE(folder);
    EXPECT_EQ(std::any_cast<std::string>(folder->value), "/home/u/Desktop/");
    EXPECT_FALSE(rememberedVariable(words("documents"), sources));
    EXPECT_FALSE(rememberedVariable(words("desktop"), {}));
    EXPECT_EQ(rememberedCompletor(words("desk"), sources), "Desktop");

    const auto script = scriptNameVariable(words("tidyupfiles now"), sources);
    ASSERT_TRUE(script);
    EXPECT_EQ(std::any_cast<ScriptTarget>(script->value),
              (ScriptTarget{ScriptTarget::Kind::appleScript, "/s/Tidy Up Files.sh"}));
    EXPECT_FALSE(scriptNameVariable(words("mail x"), sources)) << "mail is kept for the mail search";
    const auto shortcut = scriptNameVariable(words("\"music quiz\" extra"), sources);
    ASSERT_TRUE(shortcut);
    EXPECT_EQ(std::any_cast<ScriptTarget>(shortcut->value).value, "music")
        << "the first name in list order that matches";
    const auto twoWords = scriptNameVariable(words("Music Quiz"), sources);
    EXPECT_EQ(twoWords->numberOfConsumedWords, 1);
    EXPECT_EQ(scriptNameCompletor(words("tidy"), sources), "tidyupfiles");
    EXPECT_EQ(tagCompletor(words("dar"), sources), "dark red");
    EXPECT_FALSE(tagCompletor({}, sources));
}

TEST(VariableParsers, PossibleCompletion) {
    const std::vector<std::string> candidates = {"march", "May", "mayday"};
    EXPECT_EQ(possibleCompletion(candidates, "ma"), "march");
    EXPECT_EQ(possibleCompletion(candidates, "may"), "May") << "differs from the target by case";
    EXPECT_FALSE(possibleCompletion(candidates, ""));
    EXPECT_FALSE(possibleCompletion(candidates, "x"));
}

}  // namespace
}  // namespace quester
