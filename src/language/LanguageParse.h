#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "language/SentenceComponent.h"
#include "language/SentenceTemplate.h"
#include "language/VariableParserResult.h"
#include "language/VariableSources.h"

namespace quester {

// The template table of the program, read once from the compiled-in "Script"
// data: unscrambled, cut into lines, comments ("//" first, or the pencil sign
// anywhere) and blank lines skipped. Built under a one-time initialisation,
// then read-only from any thread.
class LanguageParseCache {
public:
    static const LanguageParseCache& shared();

    const std::shared_ptr<const std::vector<SentenceTemplate>>& allTemplates() const { return templates; }

    // The table from scrambled data; empty when the text isn't UTF-8.
    static std::vector<SentenceTemplate> templatesFromScrambled(std::span<const std::uint8_t> data);
    // The table from template text, one template a line.
    static std::vector<SentenceTemplate> templatesFromText(std::string_view text);

private:
    LanguageParseCache();
    std::shared_ptr<const std::vector<SentenceTemplate>> templates;
};

// Finds the templates in the words of the command area: every template is tried
// at every word position, only full matches count, and overlapping matches are
// settled in favour of the one that covers more characters. What a match means
// is the business of the command factories (CommandRecogniser). Never throws;
// words that nothing takes are simply left over. Immutable once made; parses
// may run on several threads at once.
class LanguageParse {
public:
    // The program's template table.
    explicit LanguageParse(VariableSources sources = {});
    // Any template table, for tests and tools.
    explicit LanguageParse(std::shared_ptr<const std::vector<SentenceTemplate>> templates,
                           VariableSources sources = {});

    // All surviving full matches, in template order.
    std::vector<TemplateWordStatsResult> matchesFor(const std::vector<SentenceComponent>& input) const;

    static std::optional<std::string> possibleCompletion(const std::vector<std::string>& candidates,
                                                         std::string_view target);

    const std::vector<SentenceTemplate>& templates() const { return *allTemplates; }
    const VariableParsers& variableParsers() const { return parsers; }
    const VariableCompletors& variableCompletors() const { return completors; }

private:
    std::vector<TemplateWordStatsResult> matchTemplate(const SentenceTemplate& sentenceTemplate,
                                                       const SentenceTemplate::Input& input) const;

    std::shared_ptr<const std::vector<SentenceTemplate>> allTemplates;
    VariableParsers parsers;
    VariableCompletors completors;
};

// Drops each result that overlaps an earlier-listed or later-listed result that
// explains strictly more characters. Overlap is judged on the insides of the
// ranges (lower + 1 … upper - 1), so matches that share only an edge both live.
std::vector<TemplateWordStatsResult> consolidateOverlappingResults(std::vector<TemplateWordStatsResult> list);

}  // namespace quester
