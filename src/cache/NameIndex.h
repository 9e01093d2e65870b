#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "cache/SimpleLMDB.h"
#include "support/Result.h"

namespace quester {

class QueryContainer;

// The names of a cache's items by their trigrams (group "T"): for each three
// characters of a lowercased name, the ascending identifiers of the items
// whose names hold them. A search word of three characters or more is held
// only by names that hold all its trigrams, so a selective word reads a few
// postings and records instead of every record.
//
// Postings may name items that are gone (their records are checked as they
// are read), never miss a live one: "Tprivate.indexedThrough" says up to
// which identifier every item was added, and a cache whose mark lags behind
// its last identifier (an old cache, a build that was killed) is answered by
// the full walk until its next update rebuilds the postings.
class NameIndex {
public:
    // Identifiers held in memory before they are merged into the store.
    static constexpr std::size_t pendingCeiling = 8'000'000;
    static constexpr const char* group = "T";
    static constexpr const char* indexedThroughKey = "private.indexedThrough";

    // The name as searches compare it: lowercased and composed.
    static std::string comparedForm(std::string_view name);
    // The distinct runs of three characters of `text`, in order of first sight.
    static std::vector<std::string> trigramsOf(std::string_view text);

    // For a build: `replacing` drops what the store holds for each trigram at
    // its first write, so that a rebuild from every record leaves no trace of
    // the postings before it.
    explicit NameIndex(bool replacing) : replacesStored(replacing) {}
    bool replacing() const { return replacesStored; }
    void add(std::uint32_t id, std::string_view name);
    // Adds every item the store records (outside a batch: it reads them).
    Status addEveryRecord(SimpleLMDB& store);
    std::size_t pendingCount() const { return pending; }
    // Merges what was added into the store (inside its running batch).
    Status flush(SimpleLMDB& store);
    // Whether the store's postings cover every item up to `lastID`.
    static Result<bool> isComplete(SimpleLMDB& store, std::uint32_t lastID);
    static Status markIndexedThrough(SimpleLMDB& store, std::uint32_t lastID);

    // The identifiers whose names may match the query's words, ascending;
    // none when the postings can't narrow the query down (a word shorter than
    // three characters on its own, a NOT, a criterion beside an OR, sounds
    // alike or diacritics ignored), and then every record must be read.
    static Result<std::optional<std::vector<std::uint32_t>>> candidates(SimpleLMDB& store, const QueryContainer& query);

private:
    // A build adds tens of millions of trigrams: those of at most eight bytes
    // (ASCII and most others) are kept by their bytes as one number, without
    // a string each.
    static std::uint64_t packedKey(std::string_view trigram);
    static std::string unpackedKey(std::uint64_t key);
    std::vector<std::uint32_t>& postingsOf(std::string_view trigram);

    const bool replacesStored;
    std::unordered_map<std::uint64_t, std::vector<std::uint32_t>> shortPostings;
    std::unordered_map<std::string, std::vector<std::uint32_t>> longPostings;
    std::unordered_set<std::string> written;
    std::size_t pending = 0;
};

}  // namespace quester
