// How long the query language takes for one typed line: the session parses the
// whole line again at every keystroke, so this must stay far below a millisecond.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <vector>

#include "commands/StandardCommandFactories.h"
#include "query/CommandRecogniser.h"
#include "query/QueryContainer.h"

namespace quester {
namespace {

// Ten words after the colon, four commands among them.
constexpr std::string_view tenWordSentence = ": modified this month bigger than 5mb is pdf inside Documents";
constexpr std::string_view typedQuery =
    "report OR invoice : modified this month AND bigger than 5mb is pdf inside Documents";

const CommandRecogniser& parser() {
    static const CommandRecogniser parse(standardCommandFactories());
    return parse;
}

void parseTenWordSentence(benchmark::State& state) {
    const CommandRecogniser& parse = parser();
    for (auto _ : state) {
        const auto words = SentenceComponent::parseWords(tenWordSentence, nullptr, true);
        CommandRecogniserResult result = parse.makeCommands(words);
        benchmark::DoNotOptimize(result);
    }
}
BENCHMARK(parseTenWordSentence);

void buildQueryContainer(benchmark::State& state) {
    const CommandRecogniser& parse = parser();
    for (auto _ : state) {
        QueryContainer query(typedQuery, parse);
        benchmark::DoNotOptimize(query);
    }
}
BENCHMARK(buildQueryContainer);

// A pasted or generated sentence of many criteria: the parse must grow with its
// length, not with its square. The argument is the number of criteria.
void parseLongSentence(benchmark::State& state) {
    const CommandRecogniser& parse = parser();
    std::string sentence = ":";
    for (int64_t i = 0; i < state.range(0); ++i) sentence += " modified today AND bigger than 5mb";
    const auto words = SentenceComponent::parseWords(sentence, nullptr, true);
    for (auto _ : state) {
        CommandRecogniserResult result = parse.makeCommands(words);
        benchmark::DoNotOptimize(result);
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(parseLongSentence)->Arg(200)->Arg(800)->Arg(3200)->Unit(benchmark::kMillisecond)->Complexity();

// The name test, which a walk runs on every entry it meets: plain ASCII names,
// and names with accents (composed and decomposed alike).
void nameTest(benchmark::State& state, std::vector<std::string> names) {
    const QueryContainer query("report 2024", parser());
    for (auto _ : state) {
        int matched = 0;
        for (const std::string& name : names) matched += query.fsItemNameStringIncludesWordsFromQuery(name, false);
        benchmark::DoNotOptimize(matched);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(names.size()));
}
BENCHMARK_CAPTURE(nameTest, ascii,
                  std::vector<std::string>{"Quarterly Report 2024.pdf", "IMG_2041.JPG", "notes.txt", "report-2023.docx",
                                           "build.ninja", "Makefile", "README.md", "2024 budget.xlsx"});
BENCHMARK_CAPTURE(nameTest, accented,
                  std::vector<std::string>{"Résumé report 2024.pdf", "Caf\u00e9 menu.txt", "Cafe\u0301 report 2024.txt",
                                           "Übersicht.ods", "naïve 2024 report.md", "Ångström.txt", "déjà vu.mp3",
                                           "Straße 2024.pdf"});

void tokeniseOnly(benchmark::State& state) {
    for (auto _ : state) {
        auto words = SentenceComponent::parseWords(typedQuery, nullptr, true);
        benchmark::DoNotOptimize(words);
    }
}
BENCHMARK(tokeniseOnly);

}  // namespace
}  // namespace quester

BENCHMARK_MAIN();
