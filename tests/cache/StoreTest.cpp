#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <thread>

#include "cache/CacheFileCheck.h"
#include "cache/ContentIndex.h"
#include "cache/LMDBError.h"
#include "cache/SimpleLMDB.h"
#include "platform/FileLock.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using testing::TempDir;

TEST(LMDBError, NamesTheLibrarysCodes) {
    EXPECT_EQ(LMDBError(-30799).name(), "keyExists");
    EXPECT_EQ(LMDBError(-30792).kind(), LMDBError::Kind::mapFull);
    EXPECT_EQ(LMDBError(-30780).name(), "badDBI");
    EXPECT_EQ(LMDBError(28).name(), "other(28)");
    EXPECT_EQ(LMDBError(-30796).asError("x").code, ErrorCode::corrupt);
}

class SimpleLMDBTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(store.open(file)); }
    TempDir dir;
    std::string file = dir.str() + "/test.qscache";
    SimpleLMDB store;
};

TEST_F(SimpleLMDBTest, ValuesOfTheWrongShapeReadAsNothing) {
    ASSERT_TRUE(store.put(std::uint16_t{7}, "F", "n"));
    EXPECT_EQ(*store.get<std::uint16_t>("F", "n"), 7);
    EXPECT_FALSE(store.get<std::uint32_t>("F", "n")->has_value());
    EXPECT_FALSE(store.get<std::uint32_t>("F", "absent")->has_value());
    EXPECT_TRUE(store.remove("F", "absent"));
    ASSERT_TRUE(store.remove("F", "n"));
    EXPECT_FALSE(store.get<std::uint16_t>("F", "n")->has_value());
}

TEST_F(SimpleLMDBTest, BatchWalksDeliverEveryRowOnceAndSkipOtherPrefixes) {
    std::vector<ValueGroupKey> items;
    for (int i = 0; i < 5003; ++i) items.push_back({std::to_string(i), "W", "word" + std::to_string(i)});
    items.push_back({"x", "A", "before"});
    items.push_back({"y", "Z", "after"});
    ASSERT_TRUE(store.put(items));
    std::string lastKey;
    std::set<std::string> seen;
    int batches = 0;
    while (true) {
        auto batch = store.db()->nextKeyValueBatch(lastKey, "W", 2500);
        ASSERT_TRUE(batch);
        if (!*batch) break;
        ++batches;
        for (const auto& [key, value] : **batch) EXPECT_TRUE(seen.insert(key).second) << key;
    }
    EXPECT_EQ(batches, 3);
    EXPECT_EQ(seen.size(), 5003u);
    std::string none;
    EXPECT_FALSE(*store.db()->nextKeyValueBatch(none, "Q", 2500));
    EXPECT_EQ(none, "");  // stopped at the first key past its group
}

// Two keys swapped on their page: a walk that restarted from an earlier key
// would return them for ever.
TEST_F(SimpleLMDBTest, BatchWalkOverKeysOutOfOrderFailsInsteadOfLooping) {
    ASSERT_TRUE(store.put({{"1", "W", "kiwi-a"}, {"2", "W", "kiwi-b"}}));
    ASSERT_TRUE(store.close());
    std::string bytes = testing::readFile(file);
    std::size_t first = bytes.find("Wkiwi-a"), second = bytes.find("Wkiwi-b");
    ASSERT_NE(first, std::string::npos);
    ASSERT_NE(second, std::string::npos);
    std::swap(bytes[first + 6], bytes[second + 6]);
    std::ofstream(file, std::ios::binary | std::ios::trunc) << bytes;
    ASSERT_TRUE(store.open(file));
    std::string lastKey;
    Result<std::optional<KeyValueBatch>> batch = store.db()->nextKeyValueBatch(lastKey, "W", 1);
    for (int calls = 0; batch && *batch && calls < 10; ++calls) batch = store.db()->nextKeyValueBatch(lastKey, "W", 1);
    ASSERT_FALSE(batch);
    EXPECT_EQ(batch.error().code, ErrorCode::corrupt);
}

TEST_F(SimpleLMDBTest, PrefixCursorAndIteratorSeeCommittedKeys) {
    ASSERT_TRUE(store.put({{"1", "C", "1"}, {"2", "C", "2"}, {"3", "D", "x"}}));
    auto cursor = store.db()->keyPrefixCursor("C");
    ASSERT_TRUE(cursor);
    EXPECT_EQ((*cursor)->next(), "C1");
    EXPECT_EQ((*cursor)->next(), "C2");
    EXPECT_FALSE((*cursor)->next());
    cursor->reset();
    auto all = store.db()->makeIterator();
    ASSERT_TRUE(all);
    int rows = 0;
    while ((*all)->next()) ++rows;
    EXPECT_EQ(rows, 3);
}

TEST_F(SimpleLMDBTest, BatchWritesAreAllOrNothing) {
    ASSERT_TRUE(store.beginBatch());
    ASSERT_TRUE(store.put(std::uint32_t{1}, "F", "a"));
    EXPECT_EQ(*store.get<std::uint32_t>("F", "a"), 1u);  // the batch reads its own writes
    ASSERT_TRUE(store.commitBatch());
    ASSERT_TRUE(store.beginBatch());
    ASSERT_TRUE(store.put(std::uint32_t{2}, "F", "b"));
    ASSERT_TRUE(store.close());  // a running batch is committed on close
    SimpleLMDB again;
    ASSERT_TRUE(again.open(file));
    EXPECT_EQ(*again.get<std::uint32_t>("F", "b"), 2u);
}

TEST_F(SimpleLMDBTest, CompactionKeepsTheStoreOpenWithTheSameContent) {
    std::vector<ValueGroupKey> items;
    for (int i = 0; i < 20000; ++i) items.push_back({std::string(100, 'v'), "W", std::to_string(i)});
    ASSERT_TRUE(store.put(items));
    for (int i = 0; i < 20000; i += 2) ASSERT_TRUE(store.remove("W", std::to_string(i)));
    std::uint64_t before = std::filesystem::file_size(file);
    std::ofstream(SimpleLMDB::compactionFileName(file)) << "leftover";
    ASSERT_TRUE(store.compact(file));
    EXPECT_LT(std::filesystem::file_size(file), before);
    EXPECT_FALSE(std::filesystem::exists(SimpleLMDB::compactionFileName(file)));
    EXPECT_EQ(store.db()->stats()->entries, 10000u);
    EXPECT_EQ(*store.get<std::string>("W", "1"), std::string(100, 'v'));
    EXPECT_FALSE(std::filesystem::exists(file + "-lock"));
}

TEST(SimpleLMDB, AFileCutShortIsRefusedAsCorrupt) {
    TempDir dir;
    std::string file = dir.str() + "/cut.qscache";
    {
        SimpleLMDB store;
        ASSERT_TRUE(store.open(file));
        std::vector<ValueGroupKey> items;
        for (int i = 0; i < 3000; ++i) items.push_back({std::string(200, 'x'), "F", std::to_string(i)});
        ASSERT_TRUE(store.put(items));
    }
    std::filesystem::resize_file(file, std::filesystem::file_size(file) / 2);
    SimpleLMDB store;
    Status opened = store.open(file);
    ASSERT_FALSE(opened);
    EXPECT_EQ(opened.error().code, ErrorCode::corrupt);
    EXPECT_FALSE(store.isOpen());
}

// A store holding one value, keyed "victim" in group "W".
void writeStoreWithVictim(const std::string& file) {
    SimpleLMDB store;
    ASSERT_TRUE(store.open(file));
    ASSERT_TRUE(store.put(std::string(100, 'v'), "W", "victim"));
}

// The file's bytes with the victim's stated size raised past the end.
std::string victimSizedPastTheEnd(const std::string& file) {
    std::string bytes = testing::readFile(file);
    std::size_t key = bytes.find("Wvictim");
    EXPECT_NE(key, std::string::npos);
    if (key != std::string::npos) bytes[key - 6] = 0x7F;  // the high half of the node's data size
    return bytes;
}

// A value whose stated size runs past the end of the file was copied out of
// the map, and the read of unbacked pages killed the process.
TEST(SimpleLMDB, AValueSizedPastTheEndOfTheFileReadsAsCorrupt) {
    TempDir dir;
    std::string file = dir.str() + "/long.qscache";
    writeStoreWithVictim(file);
    std::ofstream(file, std::ios::binary | std::ios::in | std::ios::out) << victimSizedPastTheEnd(file);
    SimpleLMDB store;
    Status opened = store.open(file);
    ASSERT_FALSE(opened);
    EXPECT_EQ(opened.error().code, ErrorCode::corrupt);
}

// Damage that LMDB trusts: each kind is refused before the file is mapped,
// where LMDB would have read past the map or failed an assertion.
TEST(CacheFileCheck, RefusesPagesThatLMDBWouldTrust) {
    TempDir dir;
    std::string file = dir.str() + "/pages.qscache";
    {
        SimpleLMDB store;
        ASSERT_TRUE(store.open(file));
        std::vector<ValueGroupKey> items;
        for (int i = 0; i < 500; ++i)
            items.push_back({std::string(i % 7 == 0 ? 9000 : 40, 'x'), "F", std::to_string(i)});
        ASSERT_TRUE(store.put(items));
    }
    std::string good = testing::readFile(file);
    ASSERT_TRUE(CacheFileCheck::checkBytes(good));
    std::size_t pageSize = 4096;
    // The root page of the main tree, named by the newer of the two headers.
    auto number = [&](std::size_t offset) {
        std::uint64_t value = 0;
        std::memcpy(&value, good.data() + offset, 8);
        return value;
    };
    std::size_t header = number(pageSize + 144) > number(144) ? pageSize : 0;
    std::size_t root = number(header + 128) * pageSize;
    ASSERT_GT(root, 0u);
    auto damaged = [&](std::size_t offset, char value) {
        std::string bytes = good;
        bytes[offset] = value;
        return CacheFileCheck::checkBytes(bytes);
    };
    EXPECT_FALSE(damaged(root + 13, 0x7F));               // node table past the free space
    EXPECT_FALSE(damaged(root + 15, 0x7F));               // free space past the end of the page
    EXPECT_FALSE(damaged(root + 7, 0x05));                // a page that names another place
    EXPECT_FALSE(damaged(root + 10, 0x40));               // no tree page
    EXPECT_FALSE(damaged(pageSize + 16 + 24 + 3, 0x40));  // the second header's page size differs
    EXPECT_FALSE(CacheFileCheck::checkBytes(good.substr(0, good.size() - pageSize)));
    EXPECT_FALSE(CacheFileCheck::checkBytes(std::string(3 * pageSize, '\0')));
    EXPECT_TRUE(CacheFileCheck::checkBytes(""));
    for (std::size_t offset = 2 * pageSize; offset < good.size(); offset += 997) {
        std::string bytes = good;
        bytes[offset] = static_cast<char>(bytes[offset] ^ 0x5A);
        (void)CacheFileCheck::checkBytes(bytes);  // must not crash, whatever it answers
    }
}

// A file that passed is not walked again while it stays as it was; damage
// written in place is caught even when the size and the modification date
// are put back, since the change time can't be.
TEST(CacheFileCheck, APassedFileIsWalkedAgainOnlyOnceChanged) {
    TempDir dir;
    std::string file = dir.str() + "/stamped.qscache";
    writeStoreWithVictim(file);
    ASSERT_TRUE(CacheFileCheck::checkUnlessUnchanged(file));
    const std::string stamp = testing::readFile(CacheFileCheck::stampPath(file));
    EXPECT_NE(stamp.find(" " + std::to_string(std::filesystem::file_size(file)) + " "), std::string::npos);
    ASSERT_TRUE(CacheFileCheck::checkUnlessUnchanged(file));

    const auto modified = std::filesystem::last_write_time(file);
    const std::string damaged = victimSizedPastTheEnd(file);
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    std::ofstream(file, std::ios::binary | std::ios::in | std::ios::out) << damaged;
    std::filesystem::last_write_time(file, modified);
    Status again = CacheFileCheck::checkUnlessUnchanged(file);
    ASSERT_FALSE(again);
    EXPECT_EQ(again.error().code, ErrorCode::corrupt);
    EXPECT_EQ(testing::readFile(CacheFileCheck::stampPath(file)), stamp) << "a failed walk leaves no new stamp";
}

class ContentIndexStoreTest : public ::testing::Test {
protected:
    std::unique_ptr<ContentIndex> makeIndex(std::optional<std::string> target = "/data/photos") {
        auto made = ContentIndex::make(
            {dir.str() + "/photos.qscache", target, std::nullopt, "Photos", CachingUpdatesTag::defaultTiming});
        EXPECT_TRUE(made);
        EXPECT_TRUE((*made)->open());
        return std::move(*made);
    }
    FSItem newItem(ContentIndex& index, const std::string& name, FSItem::types type, std::uint32_t parent) {
        FSItem item{*index.tree().nextID(), parent, type, name, 5, 6, 1, type == FSItem::types::file ? 42 : 0};
        EXPECT_TRUE(index.tree().write(item));
        return item;
    }
    TempDir dir;
};

TEST_F(ContentIndexStoreTest, TreeKeysAndPaths) {
    auto index = makeIndex();
    FSItem docs = newItem(*index, "docs", FSItem::types::directory, 0);
    FSItem file = newItem(*index, "a.txt", FSItem::types::file, docs.fsid);
    EXPECT_EQ(*index->store().get<std::uint32_t>("F", "private.lastAutoID"), 2u);
    EXPECT_EQ(*index->store().get<std::string>("C", "0"), std::string(1, '\1'));
    EXPECT_EQ(*index->store().get<FSItem>("F", "2"), file);
    EXPECT_EQ(**index->pathFor(file.fsid), "/data/photos/docs/a.txt");
    EXPECT_EQ(**index->findItem("/data/photos/docs/a.txt"), file);
    EXPECT_EQ(**index->findItem("/data/photos"), FSItem::root());
    EXPECT_FALSE(*index->findItem("/data/photos/docs/b.txt"));
    EXPECT_FALSE(*index->pathFor(99));
    FSItem inserted =
        **index->tree().insert({"new", "deep", "x.jpg"}, FSItem{0, 0, FSItem::types::file, "", 1, 1, 1, 3});
    EXPECT_EQ(**index->pathFor(inserted.fsid), "/data/photos/new/deep/x.jpg");
}

TEST_F(ContentIndexStoreTest, PathsWithoutATargetStandUnderTheDisplayName) {
    auto index = makeIndex(std::nullopt);
    FSItem file = newItem(*index, "a.txt", FSItem::types::file, 0);
    EXPECT_EQ(**index->pathFor(file.fsid), "/Volumes/Photos/a.txt");
}

TEST_F(ContentIndexStoreTest, RemovingAFolderTakesItsSubtreeAndFillsTheDeadListOnlyWithText) {
    auto index = makeIndex();
    FSItem docs = newItem(*index, "docs", FSItem::types::directory, 0);
    FSItem inner = newItem(*index, "inner", FSItem::types::directory, docs.fsid);
    newItem(*index, "a", FSItem::types::file, inner.fsid);
    FSItem kept = newItem(*index, "kept", FSItem::types::file, 0);
    ASSERT_TRUE(index->removeFSItem(docs.fsid));
    EXPECT_FALSE(index->store().get<std::string>("K", "dead")->has_value());
    EXPECT_EQ(index->tree().loadChildIds(0).value(), std::vector<std::uint32_t>{kept.fsid});
    EXPECT_FALSE(index->tree().record(3)->has_value());

    index->mutableDocumentInfo().lastIndexMode = ContentIndexMode::textDocuments;
    FSItem other = newItem(*index, "other", FSItem::types::directory, 0);
    FSItem child = newItem(*index, "c", FSItem::types::file, other.fsid);
    ASSERT_TRUE(index->removeFSItem(other.fsid));
    auto dead = index->words().loadDeadIds();
    EXPECT_EQ(std::set<std::uint32_t>(dead->begin(), dead->end()), (std::set<std::uint32_t>{other.fsid, child.fsid}));
}

TEST_F(ContentIndexStoreTest, WordsLongerThan256BytesAreNeverStored) {
    auto index = makeIndex();
    WordContainer fits(std::string(256, 'a'), 1, 1);
    WordContainer tooLong(std::string(257, 'a'), 1, 1);
    ASSERT_TRUE(index->words().write({&fits, &tooLong}, false));
    EXPECT_TRUE(index->words().findExact(std::string(256, 'a')));
    EXPECT_FALSE(index->words().findExact(std::string(257, 'a')));
}

TEST_F(ContentIndexStoreTest, DocumentInfoRoundTripsAndNestedOpensKeepTheStore) {
    auto index = makeIndex();
    index->mutableDocumentInfo().numberOfFSItems = 12;
    index->mutableDocumentInfo().diskKey = "disk 100 ext4";
    ASSERT_TRUE(index->saveDocumentInfo());
    ASSERT_TRUE(index->open());
    ASSERT_TRUE(index->close());
    EXPECT_TRUE(index->isOpen());
    ASSERT_TRUE(index->close());
    EXPECT_FALSE(index->isOpen());
    auto again = ContentIndex::make(
        {dir.str() + "/photos.qscache", "/data/photos", std::nullopt, std::nullopt, CachingUpdatesTag::defaultTiming});
    ASSERT_TRUE(again);
    EXPECT_EQ((*again)->documentInfo().numberOfFSItems, 12);
    EXPECT_EQ((*again)->documentInfo().diskKey, "disk 100 ext4");
    EXPECT_EQ((*again)->documentInfo().suggestedTarget, "/data/photos");
}

TEST_F(ContentIndexStoreTest, ADamagedFileIsSetAsideAndAnEmptyOneTakesItsPlace) {
    std::string file = dir.str() + "/photos.qscache";
    {
        auto index = makeIndex();
        for (int i = 0; i < 2000; ++i) newItem(*index, "f" + std::to_string(i), FSItem::types::file, 0);
    }
    std::filesystem::resize_file(file, 8192 * 2);
    auto index = makeIndex();
    EXPECT_TRUE(std::filesystem::exists(file + ".corrupt"));
    EXPECT_TRUE(index->tree().loadChildIds(0)->empty());
}

// A reader that meets a file another program is writing must not move it
// away: the check can fail for a moment while a commit is under way.
TEST_F(ContentIndexStoreTest, ADamagedFileIsLeftInPlaceWhileAnotherProgramWritesCaches) {
    std::string file = dir.str() + "/photos.qscache";
    {
        auto index = makeIndex();
        for (int i = 0; i < 2000; ++i) newItem(*index, "f" + std::to_string(i), FSItem::types::file, 0);
    }
    std::filesystem::resize_file(file, 8192 * 2);
    auto writer = FileLock::tryAcquire(dir.str() + "/.quester-cache-writer.pid");
    ASSERT_TRUE(writer);
    auto made = ContentIndex::make({file, "/data/photos", std::nullopt, "Photos", CachingUpdatesTag::defaultTiming});
    ASSERT_FALSE(made);
    EXPECT_EQ(made.error().code, ErrorCode::ioError);
    EXPECT_FALSE(std::filesystem::exists(file + ".corrupt"));
    EXPECT_EQ(std::filesystem::file_size(file), 8192u * 2);
}

}  // namespace
}  // namespace quester
