#include "content/SQLiteContentSearcher.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "testing/TempDir.h"

namespace quester {
namespace {

using Category = FoundItem::Category;

class SQLiteContentSearcherTest : public ::testing::Test {
protected:
    // A database at `name` in the temp folder made by running `sql`.
    std::string database(const std::string& name, const std::string& sql) const {
        std::string path = (temp.path() / name).string();
        sqlite3* db = nullptr;
        if (sqlite3_open(path.c_str(), &db) != SQLITE_OK) throw std::runtime_error("open " + path);
        char* message = nullptr;
        const int status = sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &message);
        const std::string error = message ? message : "";
        sqlite3_free(message);
        sqlite3_close(db);
        if (status != SQLITE_OK) throw std::runtime_error(error);
        return path;
    }
    std::vector<FoundItem> search(const std::string& path, const std::vector<std::string>& words, bool allWords = false,
                                  bool caseSensitive = false) const {
        return searcher.search(path, words, allWords, caseSensitive, ContentProgress::none());
    }
    static std::string rows(int count, const std::string& text) {
        std::string sql = "CREATE TABLE t(a TEXT);";
        for (int row = 0; row < count; ++row) sql += "INSERT INTO t VALUES('" + text + "');";
        return sql;
    }

    testing::TempDir temp;
    SQLiteContentSearcher searcher;
};

TEST_F(SQLiteContentSearcherTest, OnlyANamedFileWithTheHeaderIsADatabase) {
    const std::string real = database("real.DB", "CREATE TABLE t(a);");
    EXPECT_TRUE(searcher.canSearch(real));
    EXPECT_FALSE(searcher.canSearch(temp.write("x.db", "not a database at all").string()));
    EXPECT_FALSE(searcher.canSearch(temp.write("short.sqlite", "SQLite format 3").string()));
    std::filesystem::copy_file(real, temp.path() / "copy.txt");
    EXPECT_FALSE(searcher.canSearch((temp.path() / "copy.txt").string()));
    EXPECT_FALSE(searcher.canSearch((temp.path() / "missing.sqlite3").string()));
}

TEST_F(SQLiteContentSearcherTest, ElevenMatchingRowsGiveTenAndTheMessageTenGiveTen) {
    const auto eleven = search(database("eleven.db", rows(11, "apple")), {"apple"});
    ASSERT_EQ(eleven.size(), 11u);
    EXPECT_EQ(eleven[9].location, "t [row 10]");
    EXPECT_EQ(eleven[10].type, Category::message);
    EXPECT_EQ(eleven[10].title, "More than 10 rows match. Showing the first 10.");
    EXPECT_EQ(eleven[10].location, "");

    const auto ten = search(database("ten.db", rows(10, "apple")), {"apple"});
    ASSERT_EQ(ten.size(), 10u);
    EXPECT_EQ(ten.back().type, Category::row);
}

TEST_F(SQLiteContentSearcherTest, MatchingColumnGivesTitleAndEntryAndAllWordsMayLieInTwoColumns) {
    const std::string path = database("people.sqlite", R"(
        CREATE TABLE people(name TEXT, city TEXT);
        INSERT INTO people VALUES('Ann', 'Paris');
        INSERT INTO people VALUES('  Bob Lyon  ', 'Lyon');
        INSERT INTO people VALUES('Eve', 'Oslo');)");
    const auto one = search(path, {"LYON"});
    ASSERT_EQ(one.size(), 1u);
    EXPECT_EQ(one[0].type, Category::row);
    EXPECT_EQ(one[0].title, "Bob Lyon");
    EXPECT_EQ(one[0].entry, "name");
    EXPECT_EQ(one[0].location, "people [row 2]");

    const auto across = search(path, {"eve", "oslo"}, true);
    ASSERT_EQ(across.size(), 1u);
    EXPECT_EQ(across[0].title, "3\nEve\nOslo");
    EXPECT_EQ(across[0].entry, "");
    EXPECT_TRUE(search(path, {"ann", "lyon"}, true).empty());
}

TEST_F(SQLiteContentSearcherTest, DiacriticsCountOnlyWhenCaseSensitive) {
    const std::string path = database("cafe.db", "CREATE TABLE m(t TEXT); INSERT INTO m VALUES('Crème brûlée');");
    EXPECT_EQ(search(path, {"creme"}).size(), 1u);
    EXPECT_TRUE(search(path, {"creme"}, false, true).empty());
    EXPECT_EQ(search(path, {"Crème"}, false, true).size(), 1u);
}

TEST_F(SQLiteContentSearcherTest, BlobsAndTextPastTheColumnCutAreNotSearched) {
    const std::string path = database("cut.db",
                                      "CREATE TABLE b(data BLOB, text TEXT);"
                                      "INSERT INTO b VALUES(CAST('hidden' AS BLOB), 'plain');"
                                      "INSERT INTO b VALUES(NULL, printf('%.4090c', 'é') || 'early late');");
    EXPECT_TRUE(search(path, {"hidden"}).empty());
    EXPECT_EQ(search(path, {"ear"}).size(), 1u);
    EXPECT_TRUE(search(path, {"late"}).empty());
}

TEST_F(SQLiteContentSearcherTest, TitleIsCutTo200Characters) {
    const std::string path =
        database("long.db", "CREATE TABLE l(t TEXT); INSERT INTO l VALUES(printf('%.300c', 'ü'));");
    const auto found = search(path, {"u"});
    ASSERT_EQ(found.size(), 1u);
    std::string expected;
    for (int index = 0; index < 200; ++index) expected += "ü";
    EXPECT_EQ(found[0].title, expected);
}

TEST_F(SQLiteContentSearcherTest, TableWithoutRowidAndOddNamesAreSearched) {
    const std::string path = database("odd ?#%name.db", R"(
        CREATE TABLE "we""ird" (k TEXT PRIMARY KEY, v TEXT) WITHOUT ROWID;
        INSERT INTO "we""ird" VALUES('key7', 'needle');)");
    const auto found = search(path, {"needle"});
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].location, "we\"ird [row 0]");
    EXPECT_EQ(found[0].entry, "v");
}

TEST_F(SQLiteContentSearcherTest, DamagedOrMissingFilesGiveNothing) {
    const std::string path = database("damaged.db", rows(50, "apple"));
    std::string bytes = testing::readFile(path);
    bytes.replace(100, 3000, std::string(3000, '\xA5'));
    EXPECT_TRUE(search(temp.write("damaged2.db", bytes).string(), {"apple"}).empty());
    EXPECT_TRUE(search((temp.path() / "missing.db").string(), {"apple"}).empty());
    EXPECT_TRUE(search(path, {""}).empty());
}

TEST_F(SQLiteContentSearcherTest, CancelStopsBeforeTheFirstTable) {
    const std::string path = database("cancel.db", rows(3, "apple"));
    const ContentProgress cancelled{{}, [] { return true; }};
    EXPECT_TRUE(searcher.search(path, {"apple"}, false, false, cancelled).empty());
}

TEST(SQLiteURITest, ReservedCharactersArePercentEncoded) {
    EXPECT_EQ(SQLiteContentSearcher::immutableURI("/a b/c?d#e%f.db"), "file:///a%20b/c%3Fd%23e%25f.db?immutable=1");
    EXPECT_EQ(SQLiteContentSearcher::immutableURI("rel/é.db"), "file:rel/%C3%A9.db?immutable=1");
}

}  // namespace
}  // namespace quester
