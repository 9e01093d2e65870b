#include "cache/ContentIndexSearch.h"

#include <algorithm>

#include "cache/CacheMirror.h"
#include "cache/CachedLocation.h"
#include "cache/ContentIndexBuild.h"
#include "commands/ContentSearchCommand.h"
#include "language/UnicodeText.h"
#include "platform/FileLock.h"
#include "query/QueryContainer.h"
#include "query/SearchDataSourceDelegate.h"
#include "stores/Preferences.h"
#include "support/LogFunc.h"

namespace quester {

namespace {

std::string namesOf(const std::vector<ContentIndex*>& caches) {
    std::string names;
    for (const ContentIndex* cache : caches) names += (names.empty() ? "" : ", ") + cache->displayName();
    return names;
}

// A query whose content criterion must hold gets the text cache's answer from
// the content pass, which tests the names too: read by name, an off-line
// document would fail the criterion and keep the content pass's result out.
bool contentPassAnswers(const ContentIndex& cache, const QueryContainer& query) {
    return cache.hasTextContent() && query.findCommand<ContentSearchCommand>() && !query.isORCommandSearch() &&
           !query.booleanExpr().hasCommandUnderOr();
}

// A store found damaged while read is moved aside, so that the next use
// starts it anew. Not while another program writes caches: a reader may
// catch its commit half done.
void setAsideIfDamaged(ContentIndex& cache, const Status& failure) {
    LOG("error: " + failure.error().description());
    if (failure.error().code != ErrorCode::corrupt || cache.isOpen()) return;
    Result<FileLock> writer = FileLock::tryAcquire(cache.writerLockPath());
    if (writer) (void)quarantineCorruptCache(cache.localDBFile());
}

std::vector<std::string> excludedWords(const ContentSearchCommand& command) {
    std::vector<std::string> words = ContentSearchCommand::searchWordParts(command.wordsToExcludeString);
    if (!command.caseSensitive)
        for (std::string& word : words) word = lowercased(word);
    return words;
}

}  // namespace

ContentIndexSearch::ContentIndexSearch(std::vector<ContentIndex*> caches, const Preferences* preferences)
    : caches(std::move(caches)), preferences(preferences ? *preferences : Preferences::shared()) {}

std::vector<ContentIndex*> ContentIndexSearch::cachesForLocations(const QueryContainer& query) const {
    if (!query.whereLocation()) return {};
    std::vector<std::shared_ptr<const CacheVC_IndexInterface>> known;
    for (const ContentIndex* cache : caches) known.push_back(std::make_shared<CachedLocation>(*cache));
    std::vector<ContentIndex*> chosen;
    for (const auto& selected : query.whereLocation()->cachesForLocations(known)) {
        auto found = std::find_if(caches.begin(), caches.end(),
                                  [&](const ContentIndex* cache) { return cache->id() == selected->uuid(); });
        if (found != caches.end() && std::find(chosen.begin(), chosen.end(), *found) == chosen.end())
            chosen.push_back(*found);
    }
    return chosen;
}

void ContentIndexSearch::search(const QueryContainer& query, SearchDataSourceDelegate& handler) {
    if (!preferences.boolValue("diskCatalogCaching")) return;
    const std::vector<ContentIndex*> chosen = cachesForLocations(query);
    LOG("cachesForLocations: " + namesOf(chosen));
    for (ContentIndex* cache : chosen) syncSharedCopy(*cache);
    if (!query.searchWords().empty()) {
        for (ContentIndex* cache : chosen) {
            if (handler.shouldStop()) return;
            if (!contentPassAnswers(*cache, query)) searchNames(*cache, query, handler);
        }
    }
    searchContentIfNeeded(query, chosen, handler);
}

// A shared cache takes the newer of its file and its shared copy before it
// is read, so that a search sees what another machine last recorded.
void ContentIndexSearch::syncSharedCopy(ContentIndex& cache) {
    Result<CacheMirror::Action> synced = CacheMirror::mirrorIfNeeded(cache, false);
    if (!synced) LOG("the shared copy of " + cache.displayName() + " was not synced: " + synced.error().message);
}

void ContentIndexSearch::searchNames(ContentIndex& cache, const QueryContainer& query,
                                     SearchDataSourceDelegate& handler) {
    if (Status opened = cache.open(); !opened) {
        setAsideIfDamaged(cache, opened);
        return;
    }
    Status walked = cache.searchForFSItemNames(
        query, [&](std::vector<SearchResult> batch) { handler.supplySearchResults(std::move(batch), *this); });
    (void)cache.close();
    if (!walked) setAsideIfDamaged(cache, walked);
}

void ContentIndexSearch::searchContentIfNeeded(const QueryContainer& query, const std::vector<ContentIndex*>& caches,
                                               SearchDataSourceDelegate& handler) {
    const auto command = query.findCommand<ContentSearchCommand>();
    if (!command) return;
    const std::vector<std::string> words = command->searchWords(query);
    const std::vector<std::string> excluding = excludedWords(*command);
    for (ContentIndex* cache : caches) {
        if (!cache->hasTextContent() || handler.shouldStop()) continue;
        if (Status opened = cache->open(); !opened) {
            setAsideIfDamaged(*cache, opened);
            return;
        }
        auto ranks = cache->searchContent(words, excluding, command->wholeWord, command->allWords);
        std::vector<SearchResult> results = contentResults(*cache, query, ranks);
        if (!results.empty()) handler.supplySearchResults(std::move(results), *this);
        (void)cache->close();
    }
}

// Results with the record's size and dates; the found lines are looked for
// only when a row is shown. On a disk that is there, a document that has
// gone since the cache was updated is dropped when its row is checked.
std::vector<SearchResult> ContentIndexSearch::contentResults(ContentIndex& cache, const QueryContainer& query,
                                                             const std::map<std::string, std::int64_t>& ranks) {
    const bool mounted = ContentIndexBuild::isTargetMounted(cache);
    std::vector<SearchResult> results;
    for (const auto& [path, rank] : ranks) {
        if (!query.isPossibleMatch(path, false)) continue;
        Result<std::optional<FSItem>> item = cache.findItem(path);
        SearchResult result = item && *item
                                  ? ContentIndex::fsItemToSearchResult(**item, path, mounted)
                                  : SearchResult::forFile(SearchResultSupplier::CompactContentIndex, path, false);
        result.checkToSeeIfItExists = mounted;
        result.isOffline = !mounted;
        result.contentSearchResultsRank = rank;
        result.tryCollectSummaryLines = true;
        results.push_back(std::move(result));
    }
    return results;
}

}  // namespace quester
