#include <gtest/gtest.h>

#include "commands/StandardCommandFactories.h"
#include "language/LanguageParse.h"
#include "query/QueryContainer.h"

namespace quester {
namespace {

// The whole road with the program's own templates and factories.
const LanguageParse& parser() {
    static const LanguageParse parse(standardCommandFactories());
    return parse;
}

std::vector<std::string> printed(const QueryContainer& query) {
    std::vector<std::string> out;
    for (const auto& command : query.commandsFoundInQuery) out.push_back(command->commandToString());
    return out;
}

std::vector<std::string> texts(const std::vector<SentenceComponent>& words) {
    std::vector<std::string> out;
    for (const auto& word : words) out.push_back(word.textOriginalCase);
    return out;
}

struct Sample {
    std::string_view query;
    std::vector<std::string> commands;  // a trailing "*" matches any rest (dates print today's year)
    std::string expression;
    std::vector<std::string> searchWords;
};

class SampleQueriesWithCommands : public ::testing::TestWithParam<Sample> {};

TEST_P(SampleQueriesWithCommands, ParseAsShown) {
    const Sample& sample = GetParam();
    const QueryContainer query(sample.query, parser());
    const std::vector<std::string> commands = printed(query);
    ASSERT_EQ(commands.size(), sample.commands.size()) << sample.query;
    for (size_t i = 0; i < commands.size(); ++i) {
        const std::string& wanted = sample.commands[i];
        if (wanted.ends_with('*')) {
            EXPECT_TRUE(commands[i].starts_with(wanted.substr(0, wanted.size() - 1)))
                << sample.query << ": " << commands[i];
        } else {
            EXPECT_EQ(commands[i], wanted) << sample.query;
        }
    }
    EXPECT_EQ(query.booleanExpr.debugDescription(), sample.expression) << sample.query;
    EXPECT_EQ(query.searchWords, sample.searchWords) << sample.query;
    EXPECT_TRUE(query.invalidCommandAreaWords.empty()) << sample.query;
    EXPECT_TRUE(query.unusedCommandAreaWords.empty()) << sample.query;
}

INSTANTIATE_TEST_SUITE_P(
    TheSeventeen, SampleQueriesWithCommands,
    ::testing::Values(Sample{": today is audio", {"is audio", "modified today"}, "and(cmd(1), cmd(0))", {}},
                      Sample{"summer : is video", {"is video"}, "and(word(summer), cmd(0))", {"summer"}},
                      Sample{": content \"yearly total\"", {"content \"yearly total\""}, "cmd(0)", {}},
                      Sample{
                          "reports : modified in 2016", {"modified 2016"}, "and(word(reports), cmd(0))", {"reports"}},
                      Sample{".m4v : bigger than 10mb", {"larger than 10mb"}, "and(word(.m4v), cmd(0))", {".m4v"}},
                      Sample{"cat : is image inside animals",
                             {"is image", "inside animals"},
                             "and(word(cat), and(cmd(0), cmd(1)))",
                             {"cat"}},
                      Sample{"invoice OR receipt : after 2023",
                             {"modified 1/1/*"},
                             "and(or(word(invoice), word(receipt)), cmd(0))",
                             {"invoice", "receipt"}},
                      Sample{"holiday -work : is video",
                             {"is video", "-work"},
                             "and(and(word(holiday), not(word(work))), cmd(0))",
                             {"holiday"}},
                      Sample{"report : modified this month AND bigger than 5mb",
                             {"larger than 5mb", "modified *"},
                             "and(word(report), and(cmd(1), cmd(0)))",
                             {"report"}},
                      Sample{"screenshot OR : tag red", {"tag red"}, "or(word(screenshot), cmd(0))", {"screenshot"}},
                      Sample{".key OR .pptx : modified this year",
                             {"modified 1/1/*"},
                             "and(or(word(.key), word(.pptx)), cmd(0))",
                             {".key", ".pptx"}},
                      Sample{"budget : content \"Q4 forecast\" all words",
                             {"content \"Q4 forecast\" all words"},
                             "and(word(budget), cmd(0))",
                             {"budget"}},
                      Sample{"manual : is pdf inside Documents",
                             {"is pdf", "inside Documents"},
                             "and(word(manual), and(cmd(0), cmd(1)))",
                             {"manual"}},
                      Sample{"vacation : image is \"beach,palm tree\"",
                             {"image is \"beach,palm tree\""},
                             "and(word(vacation), cmd(0))",
                             {"vacation"}},
                      Sample{"receipts : content \"total\" without \"draft\"",
                             {"content \"total\" without \"draft\""},
                             "and(word(receipts), cmd(0))",
                             {"receipts"}},
                      Sample{"invoice (2023 OR 2024) : is pdf",
                             {"is pdf"},
                             "and(and(word(invoice), or(word(2023), word(2024))), cmd(0))",
                             {"invoice", "2023", "2024"}},
                      Sample{"photos : image includes \"dog,cat\" smaller than 2mb",
                             {"smaller than 2mb", "image includes \"dog,cat\""},
                             "and(word(photos), and(cmd(1), cmd(0)))",
                             {"photos"}}));

// Every wording below is typed after a colon; each command it makes must print a
// text that, typed after a colon, makes exactly one equal command again.
class CommandRoundTrip : public ::testing::TestWithParam<std::string_view> {};

TEST_P(CommandRoundTrip, CommandToStringParsesBackToAnEqualCommand) {
    const QueryContainer query(std::string(": ") + std::string(GetParam()), parser());
    ASSERT_FALSE(query.commandsFoundInQuery.empty()) << GetParam();
    EXPECT_TRUE(query.invalidCommandAreaWords.empty())
        << GetParam() << ": " << ::testing::PrintToString(texts(query.invalidCommandAreaWords));
    for (const CommandPtr& command : query.commandsFoundInQuery) {
        const std::string text = command->commandToString();
        const QueryContainer again(": " + text, parser());
        ASSERT_EQ(again.commandsFoundInQuery.size(), 1U) << text;
        const CommandPtr& back = again.commandsFoundInQuery.front();
        EXPECT_EQ(back->commandToString(), text);
        EXPECT_TRUE(command->isReplaceableWith(*back)) << text;
        EXPECT_TRUE(again.invalidCommandAreaWords.empty()) << text;
    }
}

INSTANTIATE_TEST_SUITE_P(
    EveryCommand, CommandRoundTrip,
    ::testing::Values("case sensitive", "whole words", "exact", "show all files", "show invisible items", "show apps",
                      "is file", "is folder", "locked", "not locked", "inside Documents", "inside \"My Docs\"",
                      "inside /tmp", "excluding folder \"My Backups\"", "tag Red", "not tag blue", ".PDF", "not .jpg",
                      "is pdf", "is public.data", "bigger than 100mb", "larger than 1.25 gb", "smaller than 0.5kb",
                      "size 3kb", "exact size 1024b", "== 7b", "max name length 20", "min name length five",
                      "max path length 100", "min path length 10", "max depth 2", "regex \"^a.*b$\"", "regex foo not",
                      "content \"x\" whole words all files use OCR case sensitive",
                      "content \"total\" without \"draft\"", "mailsearch \"text\"", "metadata \"comedy\"",
                      "author \"robin vale\"", "spotlight \"kind:pdf\"", "image is \"beach,palm tree\"",
                      "image includes cat", "today", "modified yesterday", "created last week", "created this week",
                      "edited in the last 3 days", "changed from march 2020 to may 2021", "from 2019 to 2021",
                      "modified 12 june", "modified march 2023", "recent", "modified 3/4/21", "modified 3/4/21 5/6/21",
                      "after march", "last 2 weeks", "last month", "last year", "this month", "this year", "march",
                      "from march to june 2020", "in 2020 from march to june", "from march 5 to june", "accessed today",
                      "made before march", "before 2020", "before 3/4/2020"));

TEST(QueryLanguageWithCommands, WordsNoTemplateTakesAreInvalid) {
    const QueryContainer query("report : bigger than 1mb wobble", parser());
    EXPECT_EQ(printed(query), (std::vector<std::string>{"larger than 1mb"}));
    EXPECT_EQ(texts(query.invalidCommandAreaWords), (std::vector<std::string>{"wobble"}));
}

TEST(QueryLanguageWithCommands, RefusedArgumentsLeaveTheWordsUnrecognised) {
    const QueryContainer query(": regex \"a(b\"", parser());
    EXPECT_TRUE(query.commandsFoundInQuery.empty());
    EXPECT_EQ(texts(query.invalidCommandAreaWords), (std::vector<std::string>{"regex", "a(b"}));
}

TEST(QueryLanguageWithCommands, NoColonNoCommands) {
    const QueryContainer query("bigger than 1mb", parser());
    EXPECT_TRUE(query.commandsFoundInQuery.empty());
    EXPECT_EQ(query.searchWords, (std::vector<std::string>{"bigger", "than", "1mb"}));
}

}  // namespace
}  // namespace quester
