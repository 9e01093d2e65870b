#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>

#include "cache/CachedLocation.h"
#include "cache/ContentIndex.h"
#include "cache/ContentIndexSearch.h"
#include "cache/DataConvertible.h"
#include "commands/StandardCommandFactories.h"
#include "query/CollectingSearchDataSourceDelegate.h"
#include "query/CommandRecogniser.h"
#include "query/QueryContainer.h"
#include "stores/Preferences.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using testing::TempDir;

// A cache of a real folder (so its target is there) holding records written
// directly, and posting lists for three documents.
class CacheSearchTest : public ::testing::Test {
protected:
    void SetUp() override {
        auto made = ContentIndex::make(
            {dir.str() + "/tree.qscache", target, std::nullopt, "Tree", CachingUpdatesTag::defaultTiming});
        ASSERT_TRUE(made);
        index = std::move(*made);
        index->mutableDocumentInfo().lastIndexMode = ContentIndexMode::textDocuments;
        ASSERT_TRUE(index->saveDocumentInfo());
        ASSERT_TRUE(index->open());
        FSItem docs = add("docs", FSItem::types::directory, 0);
        catDoc = add("report-a.txt", FSItem::types::file, docs.fsid).fsid;
        dogDoc = add("b.txt", FSItem::types::file, docs.fsid).fsid;
        bobcatDoc = add("report-c.txt", FSItem::types::file, 0).fsid;
        writeWords({{"cat", {{catDoc, 2}}},
                    {"catalog", {{catDoc, 3}, {dogDoc, 1}}},
                    {"bobcat", {{bobcatDoc, 4}}},
                    {"dog", {{dogDoc, 5}, {gone, 9}}}});
        (void)preferences.setValue("diskCatalogCaching", true);
    }
    void TearDown() override { (void)index->close(); }

    FSItem add(const std::string& name, FSItem::types type, std::uint32_t parent, std::int64_t size = 42) {
        FSItem item{*index->tree().nextID(), parent, type, name, 100, 200, 1, size};
        EXPECT_TRUE(index->tree().write(item));
        return item;
    }
    void writeWords(const std::map<std::string, std::map<std::uint32_t, int>>& words) {
        std::vector<WordContainer> containers;
        for (const auto& [word, documents] : words) {
            WordContainer container(word, documents.begin()->first, documents.begin()->second);
            for (auto it = std::next(documents.begin()); it != documents.end(); ++it)
                container.add(it->first, it->second - 1);
            containers.push_back(std::move(container));
        }
        std::vector<WordContainer*> pointers;
        for (auto& container : containers) pointers.push_back(&container);
        ASSERT_TRUE(index->words().write(pointers, false));
    }
    QueryContainer query(const std::string& text) {
        auto cache = std::make_shared<CachedLocation>(*index);
        return QueryContainer(text, parser, SearchLocation({SearchTarget::offline(cache, true)}));
    }
    std::vector<SearchResult> search(const std::string& text) {
        ContentIndexSearch source({index.get()}, &preferences);
        CollectingSearchDataSourceDelegate handler(false);
        source.search(query(text), handler);
        return handler.results();
    }
    std::map<std::string, std::int64_t> ranks(const std::vector<std::string>& words,
                                              const std::vector<std::string>& excluding, bool wholeWords = false,
                                              bool allWords = false) {
        std::map<std::string, std::int64_t> byName;
        for (const auto& [path, rank] : index->searchContent(words, excluding, wholeWords, allWords))
            byName[path.substr(path.rfind('/') + 1)] = rank;
        return byName;
    }

    TempDir dir;
    TempDir tree;
    std::string target = tree.str();
    std::unique_ptr<ContentIndex> index;
    std::uint32_t catDoc = 0, dogDoc = 0, bobcatDoc = 0;
    const std::uint32_t gone = 999;  // a posting whose record was removed
    Preferences preferences{""};
    CommandRecogniser parser{standardCommandFactories()};
};

TEST_F(CacheSearchTest, ThePartialWordCountsOnceWithOneContainersCount) {
    EXPECT_EQ(ranks({"cat"}, {}),
              (std::map<std::string, std::int64_t>{{"report-a.txt", 3}, {"b.txt", 1}, {"report-c.txt", 4}}));
    EXPECT_EQ(ranks({"cat"}, {}, true), (std::map<std::string, std::int64_t>{{"report-a.txt", 2}}));
    EXPECT_EQ(index->findWordInWordContainers("cat", false).size(), 3u);
    EXPECT_TRUE(index->findWordInWordContainers("cow", true).empty());
}

TEST_F(CacheSearchTest, AllWordsExcludingWordsAndRemovedDocuments) {
    EXPECT_EQ(ranks({"cat", "dog"}, {}, false, true), (std::map<std::string, std::int64_t>{{"b.txt", 6}}));
    EXPECT_EQ(ranks({"cat"}, {"zebra"}), ranks({"cat"}, {}));
    EXPECT_EQ(ranks({"cat"}, {"dog"}), (std::map<std::string, std::int64_t>{{"report-a.txt", 3}, {"report-c.txt", 4}}));
    EXPECT_EQ(ranks({"dog"}, {}), (std::map<std::string, std::int64_t>{{"b.txt", 5}}));
    EXPECT_EQ(index->documentIDsToPaths({gone, catDoc}), std::set<std::string>{target + "/docs/report-a.txt"});
}

TEST_F(CacheSearchTest, TheNamePassGivesRecordsWithTheirSizesAndDates) {
    FSItem reports = add("reports", FSItem::types::directory, 0, 0);
    // A record of an older cache ends after its name: its size reads as -1.
    FSItem old{*index->tree().nextID(), reports.fsid, FSItem::types::file, "old-report", 0, 300, 1, 0};
    std::string record = *old.asData();
    ASSERT_TRUE(index->store().putData("F" + std::to_string(old.fsid), record.substr(0, 19 + old.name.size())));
    ASSERT_TRUE(index->tree().saveChildIds(reports.fsid, {old.fsid}));

    std::map<std::string, SearchResult> found;
    for (auto& result : search("report")) found.emplace(result.url.path(), result);
    ASSERT_EQ(found.size(), 4u);
    const SearchResult& file = found.at(target + "/docs/report-a.txt");
    EXPECT_EQ(file.size, 42u);
    EXPECT_EQ(file.modDate, 200 + ReferenceDate::unixOffset);
    EXPECT_EQ(file.creationDate, 100 + ReferenceDate::unixOffset);
    EXPECT_EQ(file.searchResultSuppliedBy, SearchResultSupplier::CompactContentIndex);
    EXPECT_FALSE(file.isOffline);
    EXPECT_EQ(found.at(target + "/reports/old-report").size, 0u);
    EXPECT_EQ(found.at(target + "/reports/old-report").creationDate, 0) << "an unknown date stays unknown";
    EXPECT_TRUE(found.at(target + "/reports").isDirectory);
    EXPECT_EQ(found.at(target + "/reports").modDate, 0);
}

TEST_F(CacheSearchTest, TheNamePassWalksEveryBatch) {
    for (int i = 0; i < 2600; ++i) add("note" + std::to_string(i) + ".txt", FSItem::types::file, 0);
    ContentIndexSearch source({index.get()}, &preferences);
    CollectingSearchDataSourceDelegate handler(false);
    source.search(query("note"), handler);
    std::set<std::string> paths;
    for (const auto& result : handler.results()) paths.insert(result.url.path());
    EXPECT_EQ(paths.size(), 2600u);
}

// Paths are joined from the folders above, each read once and remembered:
// siblings and cousins must still get their own folders, a child whose folder
// record is gone stands at the target, and a loop of parents ends.
TEST_F(CacheSearchTest, TheNamePassJoinsPathsFromTheFoldersAbove) {
    FSItem a = add("a", FSItem::types::directory, 0);
    FSItem b = add("b", FSItem::types::directory, a.fsid);
    FSItem c = add("c", FSItem::types::directory, a.fsid);
    add("zz-deep", FSItem::types::file, b.fsid);
    add("zz-cousin", FSItem::types::file, c.fsid);
    add("zz-top", FSItem::types::file, a.fsid);
    FSItem lost = add("lost", FSItem::types::directory, 0);
    add("zz-orphan", FSItem::types::file, lost.fsid);
    ASSERT_TRUE(index->store().remove("F", std::to_string(lost.fsid)));
    FSItem loopA{*index->tree().nextID(), 0, FSItem::types::directory, "la", 0, 0, 1, 0};
    FSItem loopB{*index->tree().nextID(), loopA.fsid, FSItem::types::directory, "lb", 0, 0, 1, 0};
    loopA.parentID = loopB.fsid;
    ASSERT_TRUE(index->tree().writeRecord(loopA));
    ASSERT_TRUE(index->tree().writeRecord(loopB));
    add("zz-looped", FSItem::types::file, loopB.fsid);
    // A damaged folder record that names another identifier than its key.
    FSItem stray{*index->tree().nextID(), 0, FSItem::types::directory, "stray", 0, 0, 1, 0};
    const std::uint32_t strayKey = stray.fsid;
    stray.fsid = 999999;
    ASSERT_TRUE(index->store().putData("F" + std::to_string(strayKey), *stray.asData()));
    add("zz-strayed", FSItem::types::file, strayKey);

    std::set<std::string> paths;
    for (const auto& result : search("zz")) paths.insert(result.url.path().substr(target.size()));
    EXPECT_EQ(paths, (std::set<std::string>{"/a/b/zz-deep", "/a/c/zz-cousin", "/a/zz-top", "/zz-orphan",
                                            "/la/lb/zz-looped", "/stray/zz-strayed"}));
}

TEST_F(CacheSearchTest, WhatRunsDependsOnTheQueryAndThePreference) {
    EXPECT_TRUE(search("").empty()) << "no words and no content criterion";
    auto contentOnly = search(": content cat");
    ASSERT_EQ(contentOnly.size(), 3u) << "the name pass is skipped, the content pass runs";
    for (const auto& result : contentOnly) {
        EXPECT_TRUE(result.tryCollectSummaryLines);
        EXPECT_GT(result.contentSearchResultsRank, 0);
        EXPECT_EQ(result.size, 42u);
    }
    auto named = search("report : content cat without dog");
    std::set<std::string> names;
    for (const auto& result : named) names.insert(result.url.path().substr(target.size()));
    EXPECT_EQ(names, (std::set<std::string>{"/docs/report-a.txt", "/report-c.txt"}));

    index->mutableDocumentInfo().lastIndexMode = ContentIndexMode::off;
    EXPECT_TRUE(search(": content cat").empty()) << "a cache without text gives no content results";
    (void)preferences.setValue("diskCatalogCaching", false);
    EXPECT_TRUE(search("report").empty());
}

TEST(CacheSearch, ACacheOfATargetThatIsGoneAnswersOffLine) {
    TempDir dir;
    auto made = ContentIndex::make(
        {dir.str() + "/gone.qscache", dir.str() + "/unplugged", std::nullopt, "Gone", CachingUpdatesTag::never});
    ASSERT_TRUE(made);
    ContentIndex& index = **made;
    ASSERT_TRUE(index.open());
    ASSERT_TRUE(index.tree().write(FSItem{*index.tree().nextID(), 0, FSItem::types::file, "budget.xls", 1, 2, 1, 7}));
    ASSERT_TRUE(index.close());
    Preferences preferences("");
    (void)preferences.setValue("diskCatalogCaching", true);
    CommandRecogniser parser(standardCommandFactories());
    auto cache = std::make_shared<CachedLocation>(index);
    QueryContainer query("budget", parser, SearchLocation({SearchTarget::offline(cache, true)}));
    ContentIndexSearch source({&index}, &preferences);
    CollectingSearchDataSourceDelegate handler(false);
    source.search(query, handler);
    auto results = handler.results();
    ASSERT_EQ(results.size(), 1u);
    EXPECT_EQ(results[0].url.path(), dir.str() + "/unplugged/budget.xls");
    EXPECT_TRUE(results[0].isOffline);
    EXPECT_FALSE(results[0].strikeThroughDisplayNameIfMissing);
    EXPECT_EQ(results[0].size, 7u);
}

TEST_F(CacheSearchTest, LocationsSelectTheCachesTheyLieOnOrThatHoldThem) {
    ContentIndexSearch source({index.get()}, &preferences);
    auto chosen = [&](const std::string& folder) {
        return source.cachesForLocations(QueryContainer("x", parser, SearchLocation::fromURLs({Url(folder, true)})))
            .size();
    };
    EXPECT_EQ(chosen(target + "/docs"), 1u);
    EXPECT_EQ(chosen(target), 1u);
    EXPECT_EQ(chosen(target.substr(0, target.rfind('/'))), 1u);
    EXPECT_EQ(chosen(target + "ish"), 0u);
    EXPECT_TRUE(source.cachesForLocations(QueryContainer("x", parser)).empty()) << "no location, no cache";
}

}  // namespace
}  // namespace quester
