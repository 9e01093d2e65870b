#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "cache/SimpleLMDB.h"
#include "cache/WordContainer.h"
#include "support/Result.h"

namespace quester {

// The words of a cache: group "W" (one posting list per word) and the dead
// list "Kdead" (identifiers gone from the tree whose postings may remain,
// packed in no particular order). A removed document only joins the dead
// list; postings are purged once the list is long.
class WordIndex {
public:
    static constexpr std::size_t longestWord = 256;
    static constexpr std::size_t purgeThreshold = 25000;
    static constexpr std::size_t purgeWriteBatch = 10000;
    static constexpr std::size_t walkBatch = 2500;

    explicit WordIndex(SimpleLMDB& store) : store(store) {}

    // The stored container of `word`, loaded; none when absent or unreadable.
    std::optional<WordContainer> findExact(const std::string& word);
    // Stores the containers in one transaction (or in the running batch),
    // leaving out words longer than 256 bytes; with `purgeDeadIds` the dead
    // documents are dropped from them first.
    Status write(std::vector<WordContainer*> containers, bool purgeDeadIds);

    Result<std::vector<std::uint32_t>> loadDeadIds();
    // Stores the list without duplicates.
    Status saveDeadIds(const std::vector<std::uint32_t>& ids);
    Status appendDeadIds(const std::vector<std::uint32_t>& ids);
    // Above the threshold, rewrites every posting list without the dead documents.
    Status purgeWordContainers();

    // Every stored word, in order.
    Result<std::vector<std::string>> allWords();

private:
    SimpleLMDB& store;
};

}  // namespace quester
