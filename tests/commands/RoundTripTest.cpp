#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "commands/StandardCommandFactories.h"
#include "language/SentenceComponent.h"
#include "query/CommandClassName.h"
#include "query/CommandRecogniser.h"

namespace quester {
namespace {

const CommandRecogniser& parser() {
    static const CommandRecogniser instance(standardCommandFactories());
    return instance;
}

// The commands a sentence typed after a colon gives.
std::vector<CommandPtr> commandsOf(const std::string& sentence) {
    auto words = SentenceComponent::parseWords(": " + sentence, nullptr, true);
    return parser().makeCommands(words).commands;
}

// Whether every word of a sentence typed after a colon went into a command.
bool everyWordTaken(const std::string& sentence) {
    auto words = SentenceComponent::parseWords(": " + sentence, nullptr, true);
    const auto consumed = parser().makeCommands(words).consumedParts;
    return std::all_of(words.begin(), words.end(), [&](const SentenceComponent& word) {
        return std::find(consumed.begin(), consumed.end(), word) != consumed.end();
    });
}

// Sentences that reach every factory and every command name with parameters
// worth printing.
const std::vector<std::string> kSentences{
    "case sensitive",
    "content \"yearly total\"",
    "content \"Q4 forecast\" all words",
    "content \"total\" without \"draft\"",
    "content \"a,b\" whole words all files use OCR case sensitive",
    "modified today",
    "created yesterday",
    "modified recent",
    "modified in 2016",
    "created this month",
    "modified this week",
    "modified last week",
    "modified last month",
    "modified last year",
    "modified this year",
    "modified last 3 days",
    "modified march",
    "modified march 2021",
    "modified from march to may",
    "modified 1/2/21",
    "modified from 1/2/21 to 3/4/21",
    "modified before 2020",
    "modified after 2023",
    "created after march",
    "modified before 3/4/21",
    "modified from 2019 to 2021",
    "excluding folder \"Backups\"",
    "excluding folder \"old stuff\"",
    ".txt",
    "not .pdf",
    "exact",
    "is file",
    "is folder",
    "image is \"beach,palm tree\"",
    "image includes \"dog,cat\"",
    "inside Documents",
    "inside \"My Documents\"",
    "inside /tmp",
    "tag red",
    "not tag blue",
    "locked",
    "not locked",
    "max name length 20",
    "min name length 5",
    "mailsearch \"invoice\"",
    "max path length 100",
    "min path length 10",
    "max depth 2",
    "regex \"^a.*z$\"",
    "regex ^tmp not",
    "larger than 100mb",
    "smaller than 1.5gb",
    "size 3mb",
    "exact size 1024b",
    "== 7kb",
    "show apps",
    "show all files",
    "show invisible items",
    "metadata \"comedy\"",
    "author \"Jane Doe\"",
    "spotlight \"kind:pdf\"",
    "is pdf",
    "is image",
    "is public.data",
    "whole words",
    // Date templates and number forms the wordings above leave out.
    "larger than 1.25 gb",
    "smaller than 0.5kb",
    "== 7b",
    "min name length five",
    "edited in the last 3 days",
    "last 2 weeks",
    "changed from march 2020 to may 2021",
    "modified 12 june",
    "modified 3/4/21 5/6/21",
    "from march to june 2020",
    "in 2020 from march to june",
    "from march 5 to june",
    "accessed today",
    "made before march",
    "before 3/4/2020",
};

TEST(CommandRoundTrip, EveryCanonicalWordingParsesBackToAnEqualCommand) {
    std::set<std::string> classesSeen;
    for (const auto& sentence : kSentences) {
        SCOPED_TRACE(sentence);
        auto first = commandsOf(sentence);
        ASSERT_EQ(first.size(), 1u);
        EXPECT_TRUE(everyWordTaken(sentence));
        std::string text = first[0]->commandToString();
        auto again = commandsOf(text);
        ASSERT_EQ(again.size(), 1u) << "canonical text: " << text;
        EXPECT_TRUE(everyWordTaken(text)) << text;
        EXPECT_EQ(commandClassName(*again[0]), commandClassName(*first[0]));
        EXPECT_EQ(again[0]->commandToString(), text);
        EXPECT_TRUE(again[0]->isReplaceableWith(*first[0])) << text;
        EXPECT_TRUE(first[0]->isReplaceableWith(*again[0])) << text;
        classesSeen.insert(commandClassName(*first[0]));
    }
    // Every class a factory makes, but the remembered folder (no wording) and
    // scripts (which need a scripts folder).
    EXPECT_EQ(classesSeen.size(), 25u);
}

TEST(CommandRoundTrip, CanonicalWordingsOfTheSpokenForms) {
    auto textOf = [](const std::string& sentence) {
        auto commands = commandsOf(sentence);
        return commands.size() == 1 ? commands[0]->commandToString() : std::string("<none>");
    };
    EXPECT_EQ(textOf("bigger than 10 mb"), "larger than 10mb");
    EXPECT_EQ(textOf("bigger than twenty kb"), "larger than 20kb");
    EXPECT_EQ(textOf("over 1.50mb"), "larger than 1.5mb");
    EXPECT_EQ(textOf("modified during 2016"), "modified 2016");
    EXPECT_EQ(textOf("edited in 2016"), "modified 2016");
    EXPECT_EQ(textOf("today"), "modified today");
    EXPECT_EQ(textOf("kind is PDF"), "is pdf");
    EXPECT_EQ(textOf(".PDF"), ".pdf");
    EXPECT_EQ(textOf("tag Red"), "tag red");
    EXPECT_EQ(textOf("show games"), "apps");
    EXPECT_EQ(textOf("max depth two"), "max depth 2");
}

}  // namespace
}  // namespace quester

namespace quester {
namespace {

// A parser that knows a scripts folder, shortcuts and remembered folders.
const CommandRecogniser& parserWithUserLists() {
    static const CommandRecogniser instance = [] {
        VariableSources sources;
        sources.scriptPaths = [] { return std::vector<std::string>{"/scripts/Tidy Up.sh", "/scripts/mail.sh"}; };
        sources.shortcutNames = [] { return std::vector<std::string>{"music quiz", "music"}; };
        sources.rememberedFolders = [] {
            return std::vector<std::pair<std::string, std::string>>{{"projects", "/srv/projects"}};
        };
        return CommandRecogniser(standardCommandFactories(), sources);
    }();
    return instance;
}

std::vector<CommandPtr> userCommandsOf(const std::string& sentence) {
    return parserWithUserLists().makeCommands(SentenceComponent::parseWords(": " + sentence, nullptr, true)).commands;
}

TEST(CommandRoundTrip, ScriptsAndShortcutsPrintTheWordsThatReachThem) {
    for (const std::string sentence : {"tidyup now please", "shortcut music quiz", "tidyup"}) {
        SCOPED_TRACE(sentence);
        auto first = userCommandsOf(sentence);
        ASSERT_EQ(first.size(), 1u);
        EXPECT_EQ(commandClassName(*first[0]), "ScriptCommand");
        EXPECT_EQ(first[0]->commandToString(), sentence);
        auto again = userCommandsOf(first[0]->commandToString());
        ASSERT_EQ(again.size(), 1u);
        EXPECT_EQ(again[0]->commandToString(), sentence);
        EXPECT_TRUE(again[0]->commandStopsWordBasedSearches());
    }
}

TEST(CommandRoundTrip, ARememberedFolderHasNoWordingOfItsOwn) {
    auto commands = userCommandsOf("projects top level");
    ASSERT_EQ(commands.size(), 1u);
    EXPECT_EQ(commandClassName(*commands[0]), "KnownDirectoriesCommand");
    EXPECT_EQ(commands[0]->commandToString(), "");
    EXPECT_TRUE(commands[0]->commandStopsWordBasedSearches());
}

}  // namespace
}  // namespace quester
