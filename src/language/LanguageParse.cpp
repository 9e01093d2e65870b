#include "language/LanguageParse.h"

#include <algorithm>

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

bool overlaps(const CharacterRange& a, const CharacterRange& b) {
    const int aLow = a.lowerBound + 1;
    const int aHigh = a.upperBound - 1;
    const int bLow = b.lowerBound + 1;
    const int bHigh = b.upperBound - 1;
    if (aLow > aHigh || bLow > bHigh) return false;
    return std::max(aLow, bLow) <= std::min(aHigh, bHigh);
}

}  // namespace

std::vector<TemplateWordStatsResult> consolidateOverlappingResults(std::vector<TemplateWordStatsResult> list) {
    std::vector<bool> dropped(list.size(), false);
    for (size_t a = 0; a < list.size(); ++a) {
        for (size_t b = 0; b < list.size(); ++b) {
            if (dropped[b] || a == b) continue;
            const bool beaten = list[a].numberOfCharactersMatched > list[b].numberOfCharactersMatched;
            if (beaten && overlaps(list[a].position, list[b].position)) dropped[b] = true;
        }
    }
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
