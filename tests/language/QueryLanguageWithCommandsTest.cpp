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

TEST(QueryLanguageWithCommands, RefusedArgumentsLeaveTheWordsUnrecognised) {
    const QueryContainer query(": regex \"a(b\"", parser());
    EXPECT_TRUE(query.commandsFoundInQuery().empty());
    EXPECT_EQ(texts(query.invalidCommandAreaWords()), (std::vector<std::string>{"regex", "a(b"}));
}

}  // namespace
}  // namespace quester
