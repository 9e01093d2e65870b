#include "query/SearchResult.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include "testing/TempDir.h"

namespace quester {
namespace {

SearchResult sampleResult() {
    SearchResult result;
    result.uuid = *Uuid::fromString("6A1F0C2E-9B3D-4E5F-8A7B-1C2D3E4F5A6B");
    result.url = Url("/home/ann/Q4 report é.pdf");
    result.size = 1234;
    result.creationDate = 1700000000;
    result.modDate = 1700000100;
    result.lastAccessDate = 1700000200;
    result.checkToSeeIfItExists = true;
    result.searchResultSuppliedBy = SearchResultSupplier::CompactContentIndex;
    result.contentSearchResultsRank = 7;
    result.strikeThroughDisplayNameIfMissing = true;
    return result;
}

TEST(SearchResultJSON, KeysComeInTheNetworkOrderWithThePathPercentEncodedAndNoEmptyDiskKey) {
    SearchResult result = sampleResult();
    result.diskKey = "Data 500107862016 ext4";
    EXPECT_EQ(result.toJSON(),
              R"({"diskKey":"Data 500107862016 ext4","url":"file:///home/ann/Q4%20report%20%C3%A9.pdf",)"
              R"("isDirectory":false,"size":1234,"creationDate":1700000000,"modDate":1700000100,)"
              R"("lastAccessDate":1700000200,"checkToSeeIfItExists":true,)"
              R"("uuid":"6A1F0C2E-9B3D-4E5F-8A7B-1C2D3E4F5A6B","searchResultSuppliedBy":10,)"
              R"("ignoreSearchLocation":false,"contentSearchResultsRank":7,"strikeThroughDisplayNameIfMissing":true})");
    std::string withoutKey = sampleResult().toJSON();
    EXPECT_EQ(withoutKey.find("diskKey"), std::string::npos);
    EXPECT_TRUE(withoutKey.starts_with(R"({"url":"file:///home/)")) << withoutKey;
}

TEST(SearchResultJSON, DecodingGivesBackTheEncodedFieldsButNoContentData) {
    SearchResult result = sampleResult();
    result.diskKey = "Backup 1000 btrfs";
    result.isDirectory = true;
    result.url = Url("/home/ann/Folder", true);
    result.foundItems = std::vector<FoundItem>{FoundItem{}};
    result.contentSearchResults = std::map<std::string, std::vector<CharacterRange>>{{"a line", {{0, 1}}}};
    result.tryCollectSummaryLines = true;
    result.tags = std::vector<std::string>{"red"};

    auto decoded = SearchResult::fromJSON(result.toJSON());
    ASSERT_TRUE(decoded.ok()) << decoded.error().message;
    EXPECT_EQ(decoded->toJSON(), result.toJSON()) << "every encoded field comes back";
    EXPECT_TRUE(decoded->url.isDirectory());
    EXPECT_FALSE(decoded->foundItems.has_value());
    EXPECT_FALSE(decoded->contentSearchResults.has_value());
    EXPECT_FALSE(decoded->tryCollectSummaryLines);
    EXPECT_FALSE(decoded->tags.has_value());
}

TEST(SearchResultJSON, MissingKeysAndBadValuesAreRefused) {
    auto full = nlohmann::json::parse(sampleResult().toJSON());
    for (const auto& [key, value] : full.items()) {
        auto missing = full;
        missing.erase(key);
        EXPECT_FALSE(SearchResult::fromJSON(missing.dump()).ok()) << key;
    }
    auto withSupplier = [&](int raw) {
        auto changed = full;
        changed["searchResultSuppliedBy"] = raw;
        return SearchResult::fromJSON(changed.dump()).ok();
    };
    EXPECT_TRUE(withSupplier(12));
    EXPECT_FALSE(withSupplier(13));
    auto badURL = full;
    badURL["url"] = "http://example.com/a";
    EXPECT_FALSE(SearchResult::fromJSON(badURL.dump()).ok());
    auto badSize = full;
    badSize["size"] = "big";
    EXPECT_FALSE(SearchResult::fromJSON(badSize.dump()).ok());
    EXPECT_FALSE(SearchResult::fromJSON("[1,2]").ok());
    EXPECT_FALSE(SearchResult::fromJSON("{").ok());
}

TEST(SearchResultJSON, NumbersWithAFractionOrAnExponentInIntegerKeysAreRefusedNotConverted) {
    auto full = nlohmann::json::parse(sampleResult().toJSON());
    for (const char* key :
         {"size", "creationDate", "modDate", "lastAccessDate", "searchResultSuppliedBy", "contentSearchResultsRank"}) {
        for (double value : {1e300, -1e300, 1.5}) {
            auto changed = full;
            changed[key] = value;
            EXPECT_FALSE(SearchResult::fromJSON(changed.dump()).ok()) << key << " " << value;
        }
    }
}

TEST(SearchResultForFile, ReadsSizeAndDatesOfAnExistingFile) {
    testing::TempDir dir;
    auto path = dir.write("a.txt", "hello");
    struct stat attributes {};
    ASSERT_EQ(stat(path.c_str(), &attributes), 0);

    auto result = SearchResult::forFile(SearchResultSupplier::fileSystem, path.string(), true);
    EXPECT_EQ(result.size, 5u);
    EXPECT_EQ(result.modDate, attributes.st_mtim.tv_sec);
    EXPECT_FALSE(result.isDirectory);
    EXPECT_EQ(result.lastAccessDate, 0);
}

TEST(SearchResultForFile, AVanishedFileStillMakesAResultWithZeros) {
    testing::TempDir dir;
    auto result = SearchResult::forFile(SearchResultSupplier::spotlight, dir.str() + "/gone.txt", false);
    EXPECT_EQ(result.size, 0u);
    EXPECT_EQ(result.creationDate, 0);
    EXPECT_EQ(result.modDate, 0);
    auto again = SearchResult::forFile(SearchResultSupplier::spotlight, dir.str() + "/gone.txt", false);
    EXPECT_NE(again.id(), result.id()) << "each result has its own identity";
}

TEST(FileURLText, PercentEncodingRoundTrips) {
    for (const char* path : {"/", "/a b/c%d", "/ünï/#?[]", "/x/y&z=1"}) {
        auto url = urlFromFileURLString(fileURLString(Url(path)));
        ASSERT_TRUE(url.has_value()) << path;
        EXPECT_EQ(url->path(), path);
    }
    EXPECT_EQ(fileURLString(Url("/a/b", true)), "file:///a/b/");
    EXPECT_FALSE(urlFromFileURLString("file:///a%2").has_value());
}

}  // namespace
}  // namespace quester
