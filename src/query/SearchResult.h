#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "language/SentenceComponent.h"
#include "platform/FileSystem.h"
#include "platform/Url.h"
#include "query/FoundItem.h"
#include "query/SearchResultSupplier.h"
#include "support/Result.h"
#include "support/Uuid.h"

namespace quester {

// One found item on its way from a source through the commands to the results
// and, encoded, over the network. A plain value, copied between threads.
struct SearchResult {
    Uuid uuid = Uuid::random();
    std::optional<std::string> diskKey;  // set for items of a cache whose disk may be off line
    Url url;
    std::uint64_t size = 0;
    std::int64_t creationDate = 0;  // whole seconds since 1970; 0 unknown
    std::int64_t modDate = 0;
    std::int64_t lastAccessDate = 0;
    bool checkToSeeIfItExists = false;
    bool ignoreSearchLocation = false;
    bool isDirectory = false;
    bool strikeThroughDisplayNameIfMissing = false;
    bool isOffline = false;  // known from the cache of a disk that is not connected now
    // The source tested the name against the query's words as the filters
    // would (case and diacritics alike), and it passed.
    bool nameIsKnownToMatch = false;
    SearchResultSupplier searchResultSuppliedBy = SearchResultSupplier::none;
    std::optional<std::vector<FoundItem>> foundItems;
    // Per found text line, where in it the query's words lie.
    std::optional<std::map<std::string, std::vector<CharacterRange>>> contentSearchResults;
    std::int64_t contentSearchResultsRank = 0;
    bool tryCollectSummaryLines = false;
    std::optional<std::vector<std::string>> tags;

    const Uuid& id() const { return uuid; }

    // A result for the file at `path`, with its creation date, modification date
    // and size read now through `fileSystem`. What can't be read (the file
    // vanished) stays 0.
    static SearchResult forFile(SearchResultSupplier supplier, const std::string& path, bool checkToSeeIfItExists,
                                FileSystem& fileSystem = FileSystem::real());

    // The network form: a JSON object with a fixed key order, without the
    // content data (found items, found lines, tags).
    std::string toJSON() const;
    nlohmann::ordered_json toJSONObject() const;
    // Fails with `invalidArgument` when a required key is missing or ill-typed.
    static Result<SearchResult> fromJSON(std::string_view text);
    static Result<SearchResult> fromJSONObject(const nlohmann::ordered_json& object);
};

}  // namespace quester
