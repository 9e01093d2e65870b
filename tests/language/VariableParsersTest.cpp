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
    using Parser = std::optional<VariableParserResult> (*)(std::span<const SentenceComponent>);
    const std::vector<std::tuple<Parser, std::string_view, std::optional<int>>> cases = {
        {integerVariable, "-3", -3},
        {integerVariable, "+7", 7},
        {integerVariable, "twenty-five", 25},
        {integerVariable, "2.5", std::nullopt},
        {integerVariable, "12abc", std::nullopt},
        {integerVariable, "99999999999", std::nullopt},
        {yearVariable, "1970", 1970},
        {yearVariable, "1969", std::nullopt},
        {yearVariable, "3000", std::nullopt},
        {yearVariable, "+2020", std::nullopt},
        {dayVariable, "31", 31},
        {dayVariable, "0", std::nullopt},
        {dayVariable, "32", std::nullopt},
    };
    for (const auto& [parser, text, expected] : cases) {
        const auto value = read<int>(parser, text);
        EXPECT_EQ(value ? std::optional<int>(value->first) : std::nullopt, expected) << text;
    }
}

TEST(VariableParsers, FileSizeWithAndWithoutBlank) {
    using Size = std::optional<std::pair<FileSizeArgs, int>>;
    const std::vector<std::pair<std::string_view, Size>> cases = {
        {"10mb", std::pair{FileSizeArgs{10, SizeUnits::megabytes}, 1}},
        {"10 MB x", std::pair{FileSizeArgs{10, SizeUnits::megabytes}, 2}},
        {"1.5gb", std::pair{FileSizeArgs{1.5, SizeUnits::gigabytes}, 1}},
        {"1024 bytes", std::pair{FileSizeArgs{1024, SizeUnits::bytes}, 2}},
        {"twenty kilobytes", std::pair{FileSizeArgs{20, SizeUnits::kilobytes}, 2}},
        {"twenty five k", std::pair{FileSizeArgs{25, SizeUnits::kilobytes}, 3}},
        // A number in words alone, byte alone as a unit, a unit or a number alone.
        {"twenty", std::nullopt},
        {"twenty apples", std::nullopt},
        {"10 byte", std::nullopt},
        {"mb", std::nullopt},
        {"10", std::nullopt},
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(read<FileSizeArgs>(fileSizeVariable, text), expected) << text;
    const auto spelled = read<FileSizeArgs>(fileSizeVariable, "1.1 mb");
    EXPECT_EQ(spelled->first.value, static_cast<double>(1.1F))
        << "a number read word by word is held as a 32-bit float";
}

TEST(VariableParsers, SizeUnitNamesRoundTrip) {
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
    EXPECT_EQ(all->second, 3);
    EXPECT_EQ(varArgVariable({})->numberOfConsumedWords, 0);
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
