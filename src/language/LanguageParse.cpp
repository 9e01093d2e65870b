#include "language/LanguageParse.h"

#include <algorithm>
#include <limits>

#include "language/VariableParsers.h"
#include "resources/ScriptResource.h"
#include "support/Munge.h"
#include "support/Utf8Text.h"

namespace quester {

namespace {

bool isSkipped(std::string_view line) {
    static constexpr std::string_view pencil = "\u270F\uFE0F";
    return line.starts_with("//") || line.find(pencil) != std::string_view::npos;
}

// The largest count among the entries at positions 1 … p, for entries that
// only ever grow (a Fenwick tree of maxima).
class PrefixMaximum {
public:
    explicit PrefixMaximum(size_t size) : tree(size + 1, std::numeric_limits<int>::min()) {}

    void raise(size_t position, int value) {
        for (; position < tree.size(); position += position & (~position + 1))
            tree[position] = std::max(tree[position], value);
    }

    int maximum(size_t position) const {
        int found = std::numeric_limits<int>::min();
        for (; position > 0; position -= position & (~position + 1)) found = std::max(found, tree[position]);
        return found;
    }

private:
    std::vector<int> tree;
};

// Which matches overlap a match that explains strictly more characters. Two
// matches overlap when the insides of their ranges (lower + 1 … upper - 1)
// meet. A sweep over the insides by their upper end, with the longer matches
// that began by then kept by their own upper end: n log n rather than every
// pair, since a pasted sentence can give thousands of matches.
std::vector<bool> overlappedByLongerMatches(const std::vector<TemplateWordStatsResult>& list) {
    struct Inside {
        int low;
        int high;
        int characters;
        size_t index;
    };
    std::vector<Inside> insides;
    for (size_t i = 0; i < list.size(); ++i) {
        const Inside inside{list[i].position.lowerBound + 1, list[i].position.upperBound - 1,
                            list[i].numberOfCharactersMatched, i};
        if (inside.low <= inside.high) insides.push_back(inside);
    }
    std::vector<int> highs;
    for (const Inside& inside : insides) highs.push_back(inside.high);
    std::sort(highs.begin(), highs.end());
    highs.erase(std::unique(highs.begin(), highs.end()), highs.end());
    // Position 1 is the largest upper end, so that "reaches at least x" is a prefix.
    auto positionReaching = [&](int high) {
        return highs.size() - static_cast<size_t>(std::lower_bound(highs.begin(), highs.end(), high) - highs.begin());
    };
    std::vector<Inside> byLow = insides;
    std::sort(byLow.begin(), byLow.end(), [](const Inside& a, const Inside& b) { return a.low < b.low; });
    std::sort(insides.begin(), insides.end(), [](const Inside& a, const Inside& b) { return a.high < b.high; });
    PrefixMaximum started(highs.size());
    std::vector<bool> dropped(list.size(), false);
    size_t next = 0;
    for (const Inside& candidate : insides) {
        for (; next < byLow.size() && byLow[next].low <= candidate.high; ++next)
            started.raise(positionReaching(byLow[next].high), byLow[next].characters);
        if (started.maximum(positionReaching(candidate.low)) > candidate.characters) dropped[candidate.index] = true;
    }
    return dropped;
}

}  // namespace

std::vector<TemplateWordStatsResult> consolidateOverlappingResults(std::vector<TemplateWordStatsResult> list) {
    const std::vector<bool> dropped = overlappedByLongerMatches(list);
    std::vector<TemplateWordStatsResult> kept;
    for (size_t i = 0; i < list.size(); ++i) {
        if (!dropped[i]) kept.push_back(std::move(list[i]));
    }
    return kept;
}

const LanguageParseCache& LanguageParseCache::shared() {
    static const LanguageParseCache cache;
    return cache;
}

LanguageParseCache::LanguageParseCache()
    : templates(std::make_shared<const std::vector<SentenceTemplate>>(templatesFromScrambled(scriptResource()))) {}

std::vector<SentenceTemplate> LanguageParseCache::templatesFromScrambled(std::span<const std::uint8_t> data) {
    std::vector<std::uint8_t> bytes(data.begin(), data.end());
    Munge::munge(bytes, 1);
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (!isValidUTF8(text)) return {};
    return templatesFromText(text);
}

std::vector<SentenceTemplate> LanguageParseCache::templatesFromText(std::string_view text) {
    std::vector<SentenceTemplate> templates;
    size_t begin = 0;
    while (begin < text.size()) {
        size_t end = text.find('\n', begin);
        if (end == std::string_view::npos) end = text.size();
        const std::string_view line = text.substr(begin, end - begin);
        begin = end + 1;
        if (line.empty() || isSkipped(line)) continue;
        SentenceTemplate sentenceTemplate(line);
        if (!sentenceTemplate.command.empty()) templates.push_back(std::move(sentenceTemplate));
    }
    return templates;
}

LanguageParse::LanguageParse(VariableSources sources)
    : LanguageParse(LanguageParseCache::shared().allTemplates(), std::move(sources)) {}

LanguageParse::LanguageParse(std::shared_ptr<const std::vector<SentenceTemplate>> templates, VariableSources sources)
    : allTemplates(std::move(templates)),
      parsers(standardVariableParsers(sources)),
      completors(standardVariableCompletors(sources)) {
    if (!allTemplates) allTemplates = std::make_shared<const std::vector<SentenceTemplate>>();
}

std::optional<std::string> LanguageParse::possibleCompletion(const std::vector<std::string>& candidates,
                                                             std::string_view target) {
    return quester::possibleCompletion(candidates, target);
}

std::vector<TemplateWordStatsResult> LanguageParse::matchTemplate(const SentenceTemplate& sentenceTemplate,
                                                                  const SentenceTemplate::Input& input) const {
    std::vector<TemplateWordStatsResult> results;
    int offset = 0;
    for (size_t first = 0; first < input.words().size(); ++first) {
        for (auto& result : sentenceTemplate.processInput(offset, true, input, first, parsers, completors)) {
            if (result.numberOfKeywordsMatched == sentenceTemplate.numberOfKeywords)
                results.push_back(std::move(result));
        }
        offset += input.words()[first].position.length() + 1;
    }
    return results.size() > 1 ? consolidateOverlappingResults(std::move(results)) : results;
}

std::vector<TemplateWordStatsResult> LanguageParse::matchesFor(const std::vector<SentenceComponent>& input) const {
    if (input.empty()) return {};
    const SentenceTemplate::Input prepared(input);
    std::vector<TemplateWordStatsResult> all;
    for (const SentenceTemplate& sentenceTemplate : *allTemplates) {
        for (auto& result : matchTemplate(sentenceTemplate, prepared)) all.push_back(std::move(result));
    }
    return consolidateOverlappingResults(std::move(all));
}

}  // namespace quester
