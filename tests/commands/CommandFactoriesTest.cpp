#include <gtest/gtest.h>

#include <set>

#include "commands/ContentSearchCommand.h"
#include "commands/DateCommandCreator.h"
#include "commands/InsideCommand.h"
#include "commands/LabelCommand.h"
#include "commands/SizeCommand.h"
#include "commands/StandardCommandFactories.h"
#include "language/DateCommandWhat.h"
#include "language/DateCommandWhen.h"
#include "language/FileSizeArgs.h"
#include "language/TimeUnit.h"
#include "query/CommandClassName.h"

namespace quester {
namespace {

std::string factoryName(const CommandFactory& factory) {
    if (const auto* named = dynamic_cast<const FunctionCommandFactory*>(&factory)) return named->name();
    if (dynamic_cast<const DateCommandCreator*>(&factory)) return "DateCommandCreator";
    return "?";
}

SentenceComponent word(const std::string& text) {
    auto words = SentenceComponent::parseWords(text);
    return words.empty() ? SentenceComponent{} : words.front();
}

// A name served twice would be made by whichever factory comes first.
TEST(CommandFactories, EachCommandNameIsServedOnceAndByTheFactoryThatNamesIt) {
    std::set<std::string> commandNames;
    size_t count = 0;
    for (const auto& factory : standardCommandFactories()) {
        for (const auto& name : factory->commandNames()) {
            commandNames.insert(name);
            ++count;
            EXPECT_TRUE(factory->implementsCommand(name));
        }
    }
    EXPECT_EQ(commandNames.size(), count) << "a command name is served twice";
}

TEST(CommandFactories, ArgumentsOfTheWrongKindMakeNoCommand) {
    for (const auto& factory : standardCommandFactories()) {
        for (const auto& name : factory->commandNames()) {
            auto made = factory->create(name, {std::any(3.5f)}, {});
            // Only a depth limit may do without its argument; it then has none.
            if (name == "maxDepth") {
                ASSERT_NE(made, nullptr);
                EXPECT_EQ(made->commandToString(), "max depth 0");
            } else if (made) {
                EXPECT_TRUE(factory->create(name, {}, {}) != nullptr) << name << " took a value of the wrong type";
            }
        }
        EXPECT_EQ(factory->create("noSuchCommand", {std::any(word("x"))}, {}), nullptr) << factoryName(*factory);
    }
}

TEST(CommandFactories, DatesNeedTheirWhatFirstAndAValidSpan) {
    DateCommandCreator creator;
    EXPECT_EQ(creator.create("year", {std::any(2016)}, {}), nullptr);
    EXPECT_NE(creator.create("year", {std::any(DateCommandWhat::creationDate), std::any(2016)}, {}), nullptr);
    EXPECT_EQ(creator.create("thisTimeUnit", {std::any(DateCommandWhat::creationDate), std::any(TimeUnit::day)}, {}),
              nullptr);
    DateCommandWhen day{WhenType::specificDay, std::chrono::system_clock::now(), std::nullopt};
    EXPECT_EQ(creator.create("specificDateRange",
                             {std::any(DateCommandWhat::modificationDate), std::any(day), std::any(day)}, {}),
              nullptr);
}

TEST(CommandFactories, ContentOptionsComeFromTheTemplateAndTheTrailingWords) {
    std::vector<ContentSearchFlag> options{ContentSearchFlag::allWords, ContentSearchFlag::useOCR};
    auto made = ContentSearchCommand::create(
        "textContent", {std::any(word("\"total\"")), std::any(word("\"draft\"")), std::any(options)},
        {{"without", "1"}, {"caseSensitive", "0"}});
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->commandToString(), "content \"total\" without \"draft\" all words use OCR");
    EXPECT_EQ(made->commandExample(), "content \"**total**\" without \"draft\" all words use OCR");
    EXPECT_EQ(ContentSearchCommand::create("textContent", {std::any(word("x"))}, {{"without", "1"}}), nullptr);
}

TEST(CommandIdentity, ReplaceableMeansSameClassAndSameDefiningParameters) {
    LabelCommand red("red", false);
    EXPECT_TRUE(red.isReplaceableWith(LabelCommand("red", false)));
    EXPECT_FALSE(red.isReplaceableWith(LabelCommand("red", true)));
    EXPECT_FALSE(red.isReplaceableWith(LabelCommand("blue", false)));
    EXPECT_FALSE(red.isReplaceableWith(InsideCommand("red")));

    SizeCommand bigger(SizeCommandType::greaterThan, 1, SizeUnits::megabytes);
    EXPECT_TRUE(bigger.isReplaceableWith(SizeCommand(SizeCommandType::greaterThan, 9, SizeUnits::gigabytes)));
    EXPECT_FALSE(bigger.isReplaceableWith(SizeCommand(SizeCommandType::smallerThan, 1, SizeUnits::megabytes)));

    ContentSearchCommand words("a", "", {});
    EXPECT_TRUE(words.isReplaceableWith(ContentSearchCommand("b", "", {})));
    EXPECT_FALSE(words.isReplaceableWith(ContentSearchCommand()));
}

TEST(CommandIdentity, ACopyIsANewIndependentObject) {
    auto original = std::make_shared<SizeCommand>(SizeCommandType::greaterThan, 1, SizeUnits::megabytes);
    original->setCommandConsumedParts({word("bigger")});
    auto copied = original->copy();
    auto* copy = dynamic_cast<SizeCommand*>(copied.get());
    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy->id(), original->id());
    EXPECT_TRUE(copy->commandConsumedParts().empty());
    copy->value = 5;
    EXPECT_EQ(original->commandToString(), "larger than 1mb");
}

TEST(CommandIdentity, EveryCommandOfTheTableCopiesWithoutSharingIdentity) {
    for (const auto& factory : standardCommandFactories()) {
        for (const auto& name : factory->commandNames()) {
            auto made = factory->create(name, {std::any(word("x"))}, {});
            if (!made) continue;
            auto copy = made->copy();
            EXPECT_EQ(commandClassName(*copy), commandClassName(*made));
            EXPECT_NE(copy->id(), made->id());
            EXPECT_TRUE(copy->isReplaceableWith(*made)) << name;
        }
    }
}

}  // namespace
}  // namespace quester
