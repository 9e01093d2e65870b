#include "query/SearchResultsBucket.h"

#include <gtest/gtest.h>

namespace quester {
namespace {

using namespace std::chrono_literals;

SearchResult resultAt(const std::string& path) {
    SearchResult result;
    result.url = Url(path);
    return result;
}

TEST(SearchResultsBucket, IsTimeToEmptyOnlyAfterMoreThanHalfASecond) {
    ManualClock clock;
    SearchResultsBucket bucket(clock);
    EXPECT_FALSE(bucket.isTimeToEmpty());
    clock.advance(500ms);
    EXPECT_FALSE(bucket.isTimeToEmpty());
    clock.advance(1ms);
    EXPECT_TRUE(bucket.isTimeToEmpty());
}

TEST(SearchResultsBucket, EmptyingHandsOverTheItemsAndRestartsTheInterval) {
    ManualClock clock;
    SearchResultsBucket bucket(clock);
    bucket.add(resultAt("/a"));
    bucket.add(std::vector<SearchResult>{resultAt("/b"), resultAt("/c")});
    clock.advance(2s);
    ASSERT_TRUE(bucket.isTimeToEmpty());

    size_t capacity = bucket.items().capacity();
    auto items = bucket.empty();
    ASSERT_EQ(items.size(), 3u);
    EXPECT_EQ(items[0].url.path(), "/a");
    EXPECT_EQ(items[2].url.path(), "/c");
    EXPECT_TRUE(bucket.items().empty());
    EXPECT_EQ(bucket.items().capacity(), capacity);
    EXPECT_FALSE(bucket.isTimeToEmpty());
}

}  // namespace
}  // namespace quester
