#include <gtest/gtest.h>

#include <set>

#include "FakeCommands.h"
#include "commands/StandardCommandFactories.h"
#include "query/CommandRecogniser.h"
#include "query/QueryContainer.h"

namespace quester {
namespace {

// The whole road with the program's own templates and factories.
const CommandRecogniser& parser() {
    static const CommandRecogniser parse(standardCommandFactories());
    return parse;
}

std::vector<std::string> texts(const std::vector<SentenceComponent>& words) {
    std::vector<std::string> out;
    for (const auto& word : words) out.push_back(word.textOriginalCase);
    return out;
}

// A template whose command no factory serves would leave its words unrecognised
// for ever; a factory no template reaches is dead.
TEST(QueryLanguageWithCommands, TemplatesAndFactoriesServeTheSameCommandNames) {
    const std::vector<std::string> templateNames = testing::templateCommandNames();
    std::set<std::string> served;
    for (const auto& factory : standardCommandFactories()) {
        for (const auto& name : factory->commandNames()) served.insert(name);
    }
    EXPECT_EQ(std::set<std::string>(templateNames.begin(), templateNames.end()), served);
}

// Each wording below is typed after a colon; each command it makes must print a
// text that, typed after a colon, makes exactly one equal command again. The
// commands' own round trip covers one wording a command; these are the date
// templates and number forms it leaves out.
class CommandRoundTrip : public ::testing::TestWithParam<std::string_view> {};

TEST_P(CommandRoundTrip, CommandToStringParsesBackToAnEqualCommand) {
    const QueryContainer query(std::string(": ") + std::string(GetParam()), parser());
    ASSERT_FALSE(query.commandsFoundInQuery().empty()) << GetParam();
    EXPECT_TRUE(query.invalidCommandAreaWords().empty())
        << GetParam() << ": " << ::testing::PrintToString(texts(query.invalidCommandAreaWords()));
    for (const CommandPtr& command : query.commandsFoundInQuery()) {
        const std::string text = command->commandToString();
        const QueryContainer again(": " + text, parser());
        ASSERT_EQ(again.commandsFoundInQuery().size(), 1U) << text;
        const CommandPtr& back = again.commandsFoundInQuery().front();
        EXPECT_EQ(back->commandToString(), text);
        EXPECT_TRUE(command->isReplaceableWith(*back)) << text;
        EXPECT_TRUE(again.invalidCommandAreaWords().empty()) << text;
    }
}

INSTANTIATE_TEST_SUITE_P(DatesAndNumbers, CommandRoundTrip,
                         ::testing::Values("larger than 1.25 gb", "smaller than 0.5kb", "== 7b", "min name length five",
                                           "content \"x\" whole words all files use OCR case sensitive",
                                           "edited in the last 3 days", "last 2 weeks",
                                           "changed from march 2020 to may 2021", "modified 12 june",
                                           "modified 3/4/21 5/6/21", "from march to june 2020",
                                           "in 2020 from march to june", "from march 5 to june", "accessed today",
                                           "made before march", "before 3/4/2020"));

TEST(QueryLanguageWithCommands, RefusedArgumentsLeaveTheWordsUnrecognised) {
    const QueryContainer query(": regex \"a(b\"", parser());
    EXPECT_TRUE(query.commandsFoundInQuery().empty());
    EXPECT_EQ(texts(query.invalidCommandAreaWords()), (std::vector<std::string>{"regex", "a(b"}));
}

}  // namespace
}  // namespace quester
