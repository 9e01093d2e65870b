#include <gtest/gtest.h>

#include <set>
#include <string>

#include "BuildFixture.h"
#include "cache/CachedLocation.h"
#include "cache/ContentIndexSearch.h"
#include "cache/NameIndex.h"
#include "cache/PackedNumbers.h"
#include "commands/StandardCommandFactories.h"
#include "query/CollectingSearchDataSourceDelegate.h"
#include "query/CommandRecogniser.h"
#include "query/QueryContainer.h"
#include "stores/Preferences.h"

namespace quester {
namespace {

using Paths = std::set<std::string>;

TEST(NameIndexTrigrams, AreRunsOfThreeCharactersOfTheLoweredName) {
    using Trigrams = std::vector<std::string>;
    EXPECT_EQ(NameIndex::trigramsOf("abcab"), (Trigrams{"abc", "bca", "cab"}));
    EXPECT_EQ(NameIndex::trigramsOf("aaaa"), (Trigrams{"aaa"}));
    EXPECT_TRUE(NameIndex::trigramsOf("ab").empty());
    EXPECT_EQ(NameIndex::trigramsOf("caf\xC3\xA9s"), (Trigrams{"caf", "af\xC3\xA9", "f\xC3\xA9s"}))
        << "characters, not bytes";
    EXPECT_EQ(NameIndex::comparedForm("Report.PDF"), "report.pdf");
}

// The example of doc/cache-format.md, byte for byte; a second flush appends.
TEST(NameIndexPostings, AreStoredAscendingDeltaCodedAndPacked) {
    testing::TempDir dir;
    SimpleLMDB store;
    ASSERT_TRUE(store.open(dir.str() + "/names.qscache"));
    NameIndex names(false);
    names.add(1, "report.txt");
    names.add(2, "Reports");
    names.add(3, "draft");
    names.add(4, "old report");
    ASSERT_TRUE(names.flush(store));
    EXPECT_EQ(**store.get<std::string>("T", "rep"), std::string("\x01\x03\x01\x01\x02"));
    names.add(300, "rep");
    ASSERT_TRUE(names.flush(store));
    EXPECT_EQ(unpackDeltaStored(**store.get<std::string>("T", "rep")), (std::vector<std::uint32_t>{1, 2, 4, 300}));
    EXPECT_FALSE(*store.get<std::string>("T", "dra") == std::nullopt);
}

// A cache of names chosen to catch the index out, searched through its
// postings and again by reading every record, which must agree.
class NameIndexSearchTest : public testing::BuildTest {
protected:
    void SetUp() override {
        for (const char* name :
             {"Annual Report.pdf", "annual-report-2024.xlsx", "report.txt", "REPORTS/summary.md",
              "caf\xC3\xA9 menu.txt", "cafe\xCC\x81 bill.txt", "Zo\xC3\xAB notes.txt", "ab.txt", "abc",
              "draft/old report.doc", "x/report-final.doc", "\xE5\xB9\xB4\xE5\xA0\xB1\xE5\x91\x8A.txt"})
            tree.write(name, "x");
        (void)preferences.setValue("diskCatalogCaching", true);
    }
    Paths search(const std::string& text) {
        auto index = makeIndex();
        ContentIndexSearch source({index.get()}, &preferences);
        CollectingSearchDataSourceDelegate handler(true);
        auto cache = std::make_shared<CachedLocation>(*index);
        source.search(QueryContainer(text, parser, SearchLocation({SearchTarget::offline(cache, true)})), handler);
        Paths paths;
        for (const auto& result : handler.results()) paths.insert(result.url.path().substr(tree.str().size()));
        return paths;
    }
    void setMark(std::uint32_t through) {
        auto index = makeIndex();
        ASSERT_TRUE(index->open());
        ASSERT_TRUE(NameIndex::markIndexedThrough(index->store(), through));
        ASSERT_TRUE(index->close());
    }
    std::uint32_t lastID() {
        auto index = makeIndex();
        EXPECT_TRUE(index->open());
        const std::uint32_t last = *index->tree().lastID();
        EXPECT_TRUE(index->close());
        return last;
    }

    Preferences preferences{""};
    CommandRecogniser parser{standardCommandFactories()};
    const std::vector<std::string> queries{"report",
                                           "REPORT",
                                           "annual report",
                                           "report OR menu",
                                           "report -old",
                                           "caf\xC3\xA9",
                                           "cafe",
                                           "zo\xC3\xAB",
                                           "ab",
                                           "report*",
                                           "*.doc",
                                           "nothing-like-it",
                                           "\"annual report\"",
                                           "abc",
                                           "\xE5\xB9\xB4\xE5\xA0\xB1\xE5\x91\x8A"};
};

TEST_F(NameIndexSearchTest, PostingsAnswerAsEveryRecordDoes) {
    ASSERT_TRUE(build());
    auto index = makeIndex();
    ASSERT_TRUE(index->open());
    EXPECT_TRUE(*NameIndex::isComplete(index->store(), *index->tree().lastID()));
    ASSERT_TRUE(index->close());
    std::map<std::string, Paths> byPostings;
    for (const auto& query : queries) byPostings[query] = search(query);
    EXPECT_EQ(byPostings["report"].size(), 6u);
    EXPECT_EQ(byPostings["caf\xC3\xA9"].size(), 2u) << "composed and decomposed accents meet";
    EXPECT_EQ(byPostings["\xE5\xB9\xB4\xE5\xA0\xB1\xE5\x91\x8A"].size(), 1u) << "a trigram of nine bytes";
    setMark(lastID() + 1);  // as after a killed build: every record is read
    for (const auto& query : queries) EXPECT_EQ(search(query), byPostings[query]) << query;
}

// An update adds its new names; a cache whose mark lags behind gets its
// postings rebuilt from every record by the next update.
TEST_F(NameIndexSearchTest, UpdatesAddNamesAndALaggingMarkIsRepaired) {
    ASSERT_TRUE(build());
    tree.write("later/quarterly report.txt", "x");
    ASSERT_TRUE(build());
    EXPECT_TRUE(search("quarterly").contains("/later/quarterly report.txt"));

    const Paths before = search("report");
    auto index = makeIndex();
    ASSERT_TRUE(index->open());
    ASSERT_TRUE(index->store().remove(NameIndex::group, "rep"));
    ASSERT_TRUE(index->close());
    setMark(1);
    ASSERT_TRUE(build());
    index = makeIndex();
    ASSERT_TRUE(index->open());
    EXPECT_TRUE(*NameIndex::isComplete(index->store(), *index->tree().lastID()));
    const auto posting = index->store().get<std::string>(NameIndex::group, "rep");
    ASSERT_TRUE(posting && *posting);
    EXPECT_EQ(unpackDeltaStored(**posting).size(), before.size());
    ASSERT_TRUE(index->close());
    EXPECT_EQ(search("report"), before);
}

TEST_F(NameIndexSearchTest, ADamagedPostingFallsBackToEveryRecord) {
    ASSERT_TRUE(build());
    const Paths before = search("report");
    auto index = makeIndex();
    ASSERT_TRUE(index->open());
    ASSERT_TRUE(index->store().put(std::string("\x09\x01\x02", 3), NameIndex::group, "epo"));
    ASSERT_TRUE(index->close());
    EXPECT_EQ(search("report"), before);
}

}  // namespace
}  // namespace quester
