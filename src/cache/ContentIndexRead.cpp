// The read side of a cache: the name pass, the content pass and the forms
// of their results.

#include <algorithm>
#include <chrono>
#include <numeric>
#include <set>
#include <unordered_map>

#include "cache/ContentIndex.h"
#include "cache/ContentIndexBuild.h"
#include "cache/DataConvertible.h"
#include "cache/NameIndex.h"
#include "platform/Url.h"
#include "query/QueryContainer.h"
#include "support/LogFunc.h"

namespace quester {

namespace {

constexpr std::size_t walkBatch = 2500;
constexpr const char* recordGroup = "F";
constexpr const char* wordGroup = "W";
constexpr auto deliveryInterval = std::chrono::milliseconds(500);
constexpr std::uint32_t clockInterval = 256;

std::int64_t unixSeconds(std::int32_t storedDate) {
    return storedDate == 0 ? 0 : storedDate + ReferenceDate::unixOffset;
}

// One walk of group "F". The path of each folder is formed once and kept,
// so that a result costs its own name only; a candidate's path is its
// folder's path and its name, as `pathFor` would join them.
class NamePass {
public:
    NamePass(ContentIndex& index, const QueryContainer& query, const ContentIndex::ResultsHandler& results)
        : index(index),
          query(query),
          results(results),
          isTargetMounted(ContentIndexBuild::isTargetMounted(index)),
          base(Url::correctRootBasedPath(index.pathBase())) {}

    Status run() {
        Result<std::optional<std::vector<std::uint32_t>>> narrowed = candidates();
        if (!narrowed) LOG("the names' postings were not read, every record is: " + narrowed.error().description());
        if (narrowed && *narrowed) return visitCandidates(**narrowed);
        std::string lastKey;
        while (index.isOpen()) {
            index.store().lock().wait();
            auto batch = index.store().db()->nextKeyValueBatch(lastKey, recordGroup, walkBatch);
            index.store().lock().signal();
            if (!batch) return batch.error();
            if (!*batch) break;
            for (const auto& row : **batch) visit(row.second);
        }
        deliver();
        return Status::success();
    }

private:
    Result<std::optional<std::vector<std::uint32_t>>> candidates() {
        Result<std::uint32_t> lastID = index.tree().lastID();
        if (!lastID) return lastID.error();
        Result<bool> complete = NameIndex::isComplete(index.store(), *lastID);
        if (!complete) return complete.error();
        if (!*complete) return std::optional<std::vector<std::uint32_t>>();
        return NameIndex::candidates(index.store(), query);
    }

    // Postings may name items that are gone: their records are missing.
    Status visitCandidates(const std::vector<std::uint32_t>& ids) {
        for (std::uint32_t id : ids) {
            if (!index.isOpen()) break;
            Result<std::optional<std::string>> record = index.store().getData(recordGroup + std::to_string(id));
            if (!record) return record.error();
            if (*record) visit(**record);
        }
        deliver();
        return Status::success();
    }

    void visit(std::string_view value) {
        std::optional<std::string_view> name = FSItem::nameInData(value);
        bool added = false;
        if (name && query.isPossibleMatch(*name, false))
            if (std::optional<FSItem> item = FSItem::fromData(value)) added = add(*item);
        // The clock is read for a new result, else every few hundred rows.
        const bool due = added || (++rowsSinceAdded % clockInterval) == 0;
        if (due && !bucket.empty() && std::chrono::steady_clock::now() - lastFlush > deliveryInterval) deliver();
    }

    bool add(const FSItem& item) {
        const std::optional<std::string>& folder = folderPath(item.parentID);
        if (!folder) {
            LOG("Failed to get path. " + std::to_string(item.fsid));
            return false;
        }
        bucket.push_back(ContentIndex::fsItemToSearchResult(item, joined(*folder, item.name), isTargetMounted));
        rowsSinceAdded = 0;
        return true;
    }

    // A folder's path is its parent's and its name, so each folder's record
    // is read once however deep it lies. A folder without a record stands for
    // the base (its children outlived it), and so does a chain of parents
    // that loops back on itself.
    const std::optional<std::string>& folderPath(std::uint32_t id) {
        if (auto known = folderPaths.find(id); known != folderPaths.end()) return known->second;
        // Each folder by the identifier it was read under: a damaged record
        // may name another.
        std::vector<std::pair<std::uint32_t, std::string>> chain;
        std::set<std::uint32_t> seen;
        std::uint32_t next = id;
        while (next != 0 && !folderPaths.contains(next) && seen.insert(next).second) {
            Result<std::optional<FSItem>> stored = index.tree().record(next);
            if (!stored && next == id) return folderPaths.emplace(id, std::nullopt).first->second;
            if (!stored || !*stored) break;
            chain.emplace_back(next, std::move((**stored).name));
            next = (**stored).parentID;
        }
        auto above = folderPaths.find(next);
        std::string path = above != folderPaths.end() && above->second ? *above->second : base;
        if (chain.empty()) return folderPaths.emplace(id, path).first->second;
        for (auto folder = chain.rbegin(); folder != chain.rend(); ++folder) {
            path = joined(path, folder->second);
            folderPaths.emplace(folder->first, path);
        }
        return folderPaths.at(id);
    }

    static std::string joined(const std::string& folder, const std::string& name) {
        return folder == "/" ? "/" + name : folder + "/" + name;
    }

    void deliver() {
        if (!bucket.empty()) results(std::move(bucket));
        bucket.clear();
        lastFlush = std::chrono::steady_clock::now();
    }

    ContentIndex& index;
    const QueryContainer& query;
    const ContentIndex::ResultsHandler& results;
    const bool isTargetMounted;
    const std::string base;
    std::unordered_map<std::uint32_t, std::optional<std::string>> folderPaths;
    std::vector<SearchResult> bucket;
    std::uint32_t rowsSinceAdded = 0;
    // A second ago: the first match goes out at once.
    std::chrono::steady_clock::time_point lastFlush = std::chrono::steady_clock::now() - std::chrono::seconds(1);
};

}  // namespace

Status ContentIndex::searchForFSItemNames(const QueryContainer& forQuery, const ResultsHandler& results) {
    LOG("searchForFSItemNames " + displayName());
    Status walked = NamePass(*this, forQuery, results).run();
    LOG("searchForFSItemNames done " + displayName());
    return walked;
}

SearchResult ContentIndex::fsItemToSearchResult(const FSItem& item, const std::string& path, bool isTargetMounted) {
    SearchResult result;
    result.url = Url(path, item.isDirectory());
    result.isDirectory = item.isDirectory();
    if (!item.isDirectory()) {
        result.size = static_cast<std::uint64_t>(std::max<std::int64_t>(item.size, 0));
        result.creationDate = unixSeconds(item.creationDate);
        result.modDate = unixSeconds(item.modificationDate);
    }
    result.searchResultSuppliedBy = SearchResultSupplier::CompactContentIndex;
    result.strikeThroughDisplayNameIfMissing = isTargetMounted;
    result.isOffline = !isTargetMounted;
    return result;
}

std::vector<WordContainer> ContentIndex::findWordInWordContainers(const std::string& word, bool wholeWords) {
    std::vector<WordContainer> found;
    if (!db) return found;
    if (wholeWords) {
        if (std::optional<WordContainer> exact = wordIndex->findExact(word)) found.push_back(std::move(*exact));
        return found;
    }
    std::string lastKey;
    while (true) {
        db->lock().wait();
        auto batch = db->db()->nextKeyValueBatch(lastKey, wordGroup, walkBatch);
        db->lock().signal();
        if (!batch) {
            LOG("findWordInWordContainers: " + batch.error().description());
            break;
        }
        if (!*batch) break;
        for (auto& [key, value] : **batch)
            if (std::string_view(key).substr(1).find(word) != std::string_view::npos)
                found.emplace_back(key.substr(1), std::move(value));
    }
    return found;
}

// A word that matches through several containers counts once per document,
// with the last container's count.
void ContentIndex::addWordCounts(const std::string& word, bool wholeWords, bool excluding,
                                 std::map<std::uint32_t, SearchProgress>& progress) {
    std::map<std::uint32_t, std::uint16_t> merged;
    for (WordContainer& container : findWordInWordContainers(word, wholeWords))
        for (const auto& [document, count] : container.documentIDs()) merged[document] = count;
    for (const auto& [document, count] : merged) {
        SearchProgress& entry = progress[document];
        entry.documentID = document;
        if (excluding) {
            ++entry.excludingWords;
            continue;
        }
        entry.wordStatistics[word] = count;
        ++entry.matchedWords;
    }
}

std::map<std::string, std::int64_t> ContentIndex::searchContent(const std::vector<std::string>& forWords,
                                                                const std::vector<std::string>& excludingWords,
                                                                bool wholeWords, bool allWords) {
    std::map<std::uint32_t, SearchProgress> progress;
    for (const std::string& word : forWords) addWordCounts(word, wholeWords, false, progress);
    for (const std::string& word : excludingWords) addWordCounts(word, wholeWords, true, progress);
    std::map<std::string, std::int64_t> ranks;
    for (const auto& [document, entry] : progress) {
        if (entry.excludingWords > 0) continue;
        const bool enough = allWords ? entry.matchedWords == static_cast<int>(forWords.size()) : entry.matchedWords > 0;
        if (!enough) continue;
        std::set<std::string> paths = documentIDsToPaths({document});
        if (paths.empty()) continue;
        ranks[*paths.begin()] =
            std::accumulate(entry.wordStatistics.begin(), entry.wordStatistics.end(), std::int64_t{0},
                            [](std::int64_t sum, const auto& word) { return sum + word.second; });
    }
    return ranks;
}

std::set<std::string> ContentIndex::documentIDsToPaths(const std::vector<std::uint32_t>& ids) {
    std::set<std::string> paths;
    for (std::uint32_t id : ids) {
        Result<std::optional<std::string>> path = pathFor(id);
        if (path && *path) paths.insert(std::move(**path));
    }
    return paths;
}

}  // namespace quester
