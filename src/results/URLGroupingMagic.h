#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/Url.h"

namespace quester {

// Finds the episodes of a series among file names ("Show.Name.S01E02.720p"):
// names that carry an episode word and whose other words match letter by
// letter, position by position, are grouped under the words they share. The
// media catalogue groups with it. Plain values throughout; thread-compatible.
class URLGroupingMagic {
public:
    struct FuzzyWordCompareResult;

    struct Word {
        std::string rawValue;
        std::vector<std::string> letters;  // one character each, lower-cased

        Word() = default;
        explicit Word(std::string text);
        // "e05" or "s01e05" in any case: an episode number.
        bool isTVEpisode() const;
        FuzzyWordCompareResult fuzzyCompare(const Word& other) const;
    };

    struct FuzzyWordCompareResult {
        Word a;
        Word b;
        double value = 0;              // matching positions over the letters of `a`
        std::vector<int> elementInfo;  // 1 where the letters at a position are equal
    };

    struct FuzzySentenceCompareResult {
        std::vector<FuzzyWordCompareResult> wordResults;
        // Matching words weighed by their length; matches near the start count
        // 1.25 times, so the value can pass 1.
        double value() const;
    };

    struct File {
        Url url;
        std::string fileName;  // last path component without its extension
        std::vector<Word> words;

        explicit File(Url url);
    };

    struct Group {
        std::string title;
        std::vector<Word> words;
        std::vector<File> contents;                                              // one per path, in the order added
        std::map<std::string, std::vector<FuzzySentenceCompareResult>> reasons;  // by path

        void add(const File& file, const FuzzySentenceCompareResult& why);
        bool contains(const File& file) const;
    };

    explicit URLGroupingMagic(std::vector<Url> urls) : urls(std::move(urls)) {}

    std::vector<Group> group() const;

    // The words of a file name: cut at every punctuation or white-space character.
    static std::vector<Word> splitIntoWords(const std::string& fileName);
    // Each word of `a` against the word at the same place in `b` and its two
    // neighbours, keeping the best.
    static FuzzySentenceCompareResult fuzzySentenceCompatre(const std::vector<Word>& a, const std::vector<Word>& b);

private:
    static std::vector<Word> significantWords(const std::vector<Word>& words);
    static void mergeSimilarGroups(std::vector<Group>& groups);

    std::vector<Url> urls;
};

}  // namespace quester
