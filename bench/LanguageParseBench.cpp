// How long the query language takes for one typed line: the session parses the
// whole line again at every keystroke, so this must stay far below a millisecond.

#include <benchmark/benchmark.h>

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
