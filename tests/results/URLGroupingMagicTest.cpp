#include <gtest/gtest.h>

#include "results/URLGroupingMagic.h"

namespace quester {
namespace {

using Word = URLGroupingMagic::Word;

std::vector<Url> urls(std::initializer_list<const char*> paths) {
    std::vector<Url> list;
    for (const char* path : paths) list.emplace_back(path);
    return list;
}

TEST(URLGroupingMagic, episodeWords) {
    for (const char* word : {"S01E05", "e12"}) EXPECT_TRUE(Word(word).isTVEpisode()) << word;
    for (const char* word : {"e1", "x12", "s01x05", "eab"}) EXPECT_FALSE(Word(word).isTVEpisode()) << word;
}

TEST(URLGroupingMagic, wordsAreCutAtPunctuationAndBlanks) {
    auto words = URLGroupingMagic::splitIntoWords("Show.Name - S01E01_720p");
    std::vector<std::string> raw;
    for (const auto& word : words) raw.push_back(word.rawValue);
    EXPECT_EQ(raw, (std::vector<std::string>{"Show", "Name", "S01E01", "720p"}));
    EXPECT_EQ(Word("ÄbC").letters, (std::vector<std::string>{"ä", "b", "c"}));
}

TEST(URLGroupingMagic, wordsCompareLetterByLetterInPlace) {
    auto result = Word("abcd").fuzzyCompare(Word("abxdzz"));
    EXPECT_DOUBLE_EQ(result.value, 0.75);
    EXPECT_EQ(result.elementInfo, (std::vector<int>{1, 1, 0, 1}));
    EXPECT_DOUBLE_EQ(Word("abcd").fuzzyCompare(Word("xabc")).value, 0.0);
}

TEST(URLGroupingMagic, onlyAnEarlyMatchGetsTheBonus) {
    std::vector<Word> a{Word("word"), Word("lmno"), Word("pqrs"), Word("tuvw")};
    std::vector<Word> b{Word("word"), Word("aaaa"), Word("bbbb"), Word("cccc")};
    EXPECT_DOUBLE_EQ(URLGroupingMagic::fuzzySentenceCompatre(a, b).value(), 0.25 * 1.25);
}

TEST(URLGroupingMagic, shiftedWordsStillMatchAndMissingWordsCountForNothing) {
    std::vector<Word> a{Word("great"), Word("show")};
    std::vector<Word> b{Word("show")};
    auto result = URLGroupingMagic::fuzzySentenceCompatre(a, b);
    ASSERT_EQ(result.wordResults.size(), 2u);
    EXPECT_DOUBLE_EQ(result.wordResults[0].value, 0.0);
    EXPECT_DOUBLE_EQ(result.wordResults[1].value, 0.0);
    EXPECT_DOUBLE_EQ(URLGroupingMagic::fuzzySentenceCompatre({Word("show"), Word("great")}, b).value(), 1.25);
}

TEST(URLGroupingMagic, episodesOfASeriesGroupUnderTheirSharedWords) {
    auto groups = URLGroupingMagic(urls({"/tv/Show.Name.S01E01.720p.mkv", "/tv/Show.Name.S01E02.720p.mkv",
                                         "/tv/Holiday Photos.jpg", "/tv/Other.Thing.mkv"}))
                      .group();
    ASSERT_EQ(groups.size(), 1u);
    EXPECT_EQ(groups[0].title, "Show Name");
    ASSERT_EQ(groups[0].contents.size(), 2u);
    EXPECT_EQ(groups[0].contents[0].fileName, "Show.Name.S01E01.720p");
    EXPECT_EQ(groups[0].reasons.size(), 2u);
}

TEST(URLGroupingMagic, nearlyEqualTitlesMerge) {
    auto groups = URLGroupingMagic(urls({"/tv/Great.Show.S01E01.mkv", "/tv/Great.Show.S01E02.mkv",
                                         "/tv/Great.Shows.S02E01.mkv", "/tv/Great.Shows.S02E02.mkv"}))
                      .group();
    ASSERT_EQ(groups.size(), 1u);
    EXPECT_EQ(groups[0].contents.size(), 4u);
}

TEST(URLGroupingMagic, filesWithoutEpisodeWordsNeverGroup) {
    EXPECT_TRUE(URLGroupingMagic(urls({"/a/Holiday.Photos.2019.jpg", "/a/Holiday.Photos.2020.jpg"})).group().empty());
}

}  // namespace
}  // namespace quester
