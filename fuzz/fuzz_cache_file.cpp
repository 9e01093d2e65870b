// Any bytes as a cache file, opened and walked as a search or an update walks
// it and searched by name and by words, and any bytes as each stored record
// given to its decoder. Nothing may
// crash or hang: a damaged file is refused or reads as less.

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "cache/ContentIndex.h"
#include "cache/DocumentInfo.h"
#include "cache/FSItem.h"
#include "cache/PackedNumbers.h"
#include "cache/WordContainer.h"
#include "commands/StandardCommandFactories.h"
#include "query/CommandRecogniser.h"
#include "query/QueryContainer.h"

namespace {

void decodeRecords(std::string_view bytes) {
    (void)quester::FSItem::fromData(bytes);
    (void)quester::unpackStored(bytes);
    (void)quester::unpackDeltaStored(bytes);
    quester::WordContainer word("w", std::string(bytes));
    word.dataToStore();
    (void)quester::DocumentInfo::fromJSON(bytes);
}

void walkStore(quester::ContentIndex& index) {
    auto rows = index.store().db()->makeIterator();
    if (!rows) return;
    int budget = 2000;
    while (auto row = (*rows)->next()) {
        if (--budget == 0) break;
        decodeRecords(row->second);
        const std::string& key = row->first;
        if (key.size() < 2) continue;
        if (key[0] == 'C' || key[0] == 'F') {
            std::uint32_t id = static_cast<std::uint32_t>(std::strtoul(key.c_str() + 1, nullptr, 10));
            (void)index.tree().loadFolderContents(id);
            (void)index.pathFor(id);
        }
    }
    rows->reset();
    (void)index.words().allWords();
}

// The name pass (by every record, and by the postings of a word's trigrams)
// and the content pass, with short words that most names and words hold.
void searchStore(quester::ContentIndex& index) {
    static const quester::CommandRecogniser parser(quester::standardCommandFactories());
    static const quester::QueryContainer query("a", parser);
    static const quester::QueryContainer byTrigrams("abc OR txt", parser);
    (void)index.searchForFSItemNames(query, [](std::vector<quester::SearchResult>) {});
    (void)index.searchForFSItemNames(byTrigrams, [](std::vector<quester::SearchResult>) {});
    (void)index.searchContent({"a", "e"}, {"o"}, false, true);
    (void)index.searchContent({"a"}, {}, true, false);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view bytes(reinterpret_cast<const char*>(data), size);
    decodeRecords(bytes);
    std::string path = "/tmp/fuzz_cache_file." + std::to_string(getpid()) + ".qscache";
    FILE* file = std::fopen(path.c_str(), "wb");
    if (!file) std::abort();
    if (size > 0 && std::fwrite(data, 1, size, file) != size) std::abort();
    std::fclose(file);
    {
        auto index = quester::ContentIndex::make(
            {path, "/t", std::nullopt, std::nullopt, quester::CachingUpdatesTag::defaultTiming});
        if (index && (*index)->open()) {
            walkStore(**index);
            searchStore(**index);
            (void)(*index)->close();
        }
    }
    std::remove(path.c_str());
    std::remove((path + ".corrupt").c_str());
    std::remove((path + ".checked").c_str());
    return 0;
}
