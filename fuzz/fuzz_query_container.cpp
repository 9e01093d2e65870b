// Any bytes as the text of a query, through the whole road to a QueryContainer,
// then through the name test, so that the boolean expression is evaluated too.
// Run it with long inputs and the language's words, as fuzz_query_container.options
// says: -max_len=200000 (long word lists and pasted sentences, past the query
// size limit) -dict=fuzz_query_container.dict (template keywords, operators).

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "commands/StandardCommandFactories.h"
#include "query/CommandRecogniser.h"
#include "query/QueryContainer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const quester::CommandRecogniser parser(quester::standardCommandFactories());
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const quester::QueryContainer query(text, parser);
    for (const auto& command : query.commandsFoundInQuery()) {
        const quester::QueryContainer again(": " + command->commandToString(), parser);
        (void)again;
    }
    (void)query.fsItemNameStringIncludesWordsFromQuery("/home/user/My Report 2024.pdf", false);
    (void)query.isPossibleMatch("/home/user/Caf\u00e9 menu.txt", true);
    (void)query.booleanExpr().commandLeafIndices();
    return 0;
}
