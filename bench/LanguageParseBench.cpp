// How long the query language takes for one typed line: the session parses the
// whole line again at every keystroke, so this must stay far below a millisecond.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

#include "commands/StandardCommandFactories.h"
#include "language/LanguageParse.h"
#include "query/QueryContainer.h"

namespace quester {
namespace {

// Ten words after the colon, four commands among them.
constexpr std::string_view tenWordSentence = ": modified this month bigger than 5mb is pdf inside Documents";
constexpr std::string_view typedQuery =
    "report OR invoice : modified this month AND bigger than 5mb is pdf inside Documents";

const LanguageParse& parser() {
    static const LanguageParse parse(standardCommandFactories());
    return parse;
}

void parseTenWordSentence(benchmark::State& state) {
    const LanguageParse& parse = parser();
    for (auto _ : state) {
        const auto words = SentenceComponent::parseWords(tenWordSentence, nullptr, true);
        CommandRecogniserResult result = parse.makeCommands(words);
        benchmark::DoNotOptimize(result);
    }
}
BENCHMARK(parseTenWordSentence);

void buildQueryContainer(benchmark::State& state) {
    const LanguageParse& parse = parser();
    for (auto _ : state) {
        QueryContainer query(typedQuery, parse);
        benchmark::DoNotOptimize(query);
    }
}
BENCHMARK(buildQueryContainer);

// A pasted or generated sentence of many criteria: the parse must grow with its
// length, not with its square. The argument is the number of criteria.
void parseLongSentence(benchmark::State& state) {
    const LanguageParse& parse = parser();
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
