#include "results/URLGroupingMagic.h"

#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

#include "results/DisplayText.h"
#include "support/PathText.h"

namespace quester {

namespace {

std::string utf8Of(UChar32 codePoint) {
    std::string text;
    icu::UnicodeString(codePoint).toUTF8String(text);
    return text;
}

// Reads as a decimal integer the way a number parser does: an optional sign,
// then digits only.
bool readsAsInteger(const std::vector<std::string>& letters, std::size_t from, std::size_t count) {
    std::string text;
    for (std::size_t i = from; i < from + count; ++i) text += letters[i];
    std::size_t start = (!text.empty() && (text[0] == '+' || text[0] == '-')) ? 1 : 0;
    if (start == text.size()) return false;
    return std::all_of(text.begin() + static_cast<long>(start), text.end(),
                       [](char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; });
}

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
           });
}

bool isReleaseTag(const std::string& word) {
    static const std::array<std::string_view, 9> tags{"720p", "1080p", "HDTV", "h264", "x264",
                                                      "x265", "h264",  "HEVC", "XviD"};
    return std::any_of(tags.begin(), tags.end(), [&](std::string_view tag) { return equalsIgnoringCase(tag, word); });
}

std::string joinedTitle(const URLGroupingMagic::FuzzySentenceCompareResult& result) {
    std::string title;
    for (const auto& wordResult : result.wordResults) {
        if (wordResult.value < 1.0) continue;
        if (!title.empty()) title += ' ';
        title += wordResult.a.rawValue;
    }
    return title;
}

}  // namespace

URLGroupingMagic::Word::Word(std::string text) : rawValue(std::move(text)) {
    const icu::UnicodeString unicode = icu::UnicodeString::fromUTF8(rawValue);
    for (int32_t i = 0; i < unicode.length(); i = unicode.moveIndex32(i, 1)) {
        letters.push_back(utf8Of(u_tolower(unicode.char32At(i))));
    }
}

bool URLGroupingMagic::Word::isTVEpisode() const {
    if (letters.size() == 3) return letters[0] == "e" && readsAsInteger(letters, 1, 2);
    if (letters.size() == 6) {
        return letters[0] == "s" && readsAsInteger(letters, 1, 2) && letters[3] == "e" && readsAsInteger(letters, 4, 2);
    }
    return false;
}

URLGroupingMagic::FuzzyWordCompareResult URLGroupingMagic::Word::fuzzyCompare(const Word& other) const {
    FuzzyWordCompareResult result{*this, other, 0.0, {}};
    const std::size_t common = std::min(letters.size(), other.letters.size());
    int matches = 0;
    for (std::size_t i = 0; i < common; ++i) {
        const bool same = letters[i] == other.letters[i];
        result.elementInfo.push_back(same ? 1 : 0);
        matches += same ? 1 : 0;
    }
    if (!letters.empty()) result.value = static_cast<double>(matches) / static_cast<double>(letters.size());
    return result;
}

double URLGroupingMagic::FuzzySentenceCompareResult::value() const {
    const std::size_t n = wordResults.size();
    std::size_t total = 0;
    for (const auto& result : wordResults) total += result.a.letters.size();
    double score = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
        if (wordResults[i].value <= 0.5) continue;
        score += static_cast<double>(wordResults[i].a.letters.size()) / static_cast<double>(total);
        if (i <= n / 5) score *= 1.25;
    }
    return score;
}

URLGroupingMagic::File::File(Url fileUrl) : url(std::move(fileUrl)) {
    fileName = nameWithoutExtension(url.path());
    words = splitIntoWords(fileName);
}

void URLGroupingMagic::Group::add(const File& file, const FuzzySentenceCompareResult& why) {
    if (!contains(file)) contents.push_back(file);
    reasons[file.url.path()].push_back(why);
}

bool URLGroupingMagic::Group::contains(const File& file) const {
    return std::any_of(contents.begin(), contents.end(),
                       [&](const File& present) { return present.url.path() == file.url.path(); });
}

std::vector<URLGroupingMagic::Word> URLGroupingMagic::splitIntoWords(const std::string& fileName) {
    std::vector<Word> words;
    const icu::UnicodeString unicode = icu::UnicodeString::fromUTF8(fileName);
    icu::UnicodeString piece;
    auto cut = [&] {
        if (piece.isEmpty()) return;
        std::string text;
        piece.toUTF8String(text);
        words.emplace_back(text);
        piece.remove();
    };
    for (int32_t i = 0; i < unicode.length(); i = unicode.moveIndex32(i, 1)) {
        const UChar32 c = unicode.char32At(i);
        if (u_ispunct(c) || u_isUWhiteSpace(c)) {
            cut();
        } else {
            piece.append(c);
        }
    }
    cut();
    return words;
}

URLGroupingMagic::FuzzySentenceCompareResult URLGroupingMagic::fuzzySentenceCompatre(const std::vector<Word>& a,
                                                                                     const std::vector<Word>& b) {
    FuzzySentenceCompareResult sentence;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (i >= b.size()) {
            sentence.wordResults.push_back(FuzzyWordCompareResult{});
            continue;
        }
        FuzzyWordCompareResult best = a[i].fuzzyCompare(b[i]);
        for (std::size_t neighbour : {i - 1, i + 1}) {
            if (i == 0 && neighbour == i - 1) continue;
            if (neighbour >= b.size()) continue;
            FuzzyWordCompareResult candidate = a[i].fuzzyCompare(b[neighbour]);
            if (candidate.value > best.value) best = std::move(candidate);
        }
        sentence.wordResults.push_back(std::move(best));
    }
    return sentence;
}

std::vector<URLGroupingMagic::Word> URLGroupingMagic::significantWords(const std::vector<Word>& words) {
    std::vector<Word> kept;
    for (const auto& word : words) {
        if (word.letters.size() > 3 && !word.isTVEpisode() && !isReleaseTag(word.rawValue)) kept.push_back(word);
    }
    return kept;
}

void URLGroupingMagic::mergeSimilarGroups(std::vector<Group>& groups) {
    for (std::size_t i = 0; i < groups.size(); ++i) {
        for (std::size_t j = 0; j < groups.size();) {
            const bool similar = i != j && groups[i].title != groups[j].title &&
                                 fuzzySentenceCompatre(groups[i].words, groups[j].words).value() > 0.85;
            if (!similar) {
                ++j;
                continue;
            }
            for (const auto& file : groups[j].contents) {
                for (const auto& why : groups[j].reasons[file.url.path()]) groups[i].add(file, why);
            }
            groups.erase(groups.begin() + static_cast<long>(j));
            if (j < i) --i;
        }
    }
}

std::vector<URLGroupingMagic::Group> URLGroupingMagic::group() const {
    std::vector<File> files;
    for (const auto& url : urls) {
        File file(url);
        const bool hasEpisode =
            std::any_of(file.words.begin(), file.words.end(), [](const Word& word) { return word.isTVEpisode(); });
        if (hasEpisode) files.push_back(std::move(file));
    }
    std::vector<Group> groups;
    for (const auto& x : files) {
        for (const auto& y : files) {
            if (x.fileName == y.fileName) continue;
            const std::vector<Word> xWords = significantWords(x.words);
            const auto result = fuzzySentenceCompatre(xWords, significantWords(y.words));
            if (result.value() <= 0.75) continue;
            const std::string title = joinedTitle(result);
            if (title.empty()) continue;
            auto found = std::find_if(groups.begin(), groups.end(), [&](const Group& g) { return g.title == title; });
            if (found == groups.end()) {
                groups.push_back(Group{title, xWords, {}, {}});
                found = groups.end() - 1;
            }
            found->add(x, result);
            found->add(y, result);
        }
    }
    mergeSimilarGroups(groups);
    return groups;
}

}  // namespace quester
