#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "language/SentenceComponent.h"
#include "language/VariableParserResult.h"

namespace quester {

// One line of the template language: keywords and "~variables", then the command
// word ("command" or "command/key=value,key=value"). Made once when the table is
// loaded; matching reads it from any thread.
class SentenceTemplate {
public:
    // What one template word knows about itself, worked out once per line.
    struct WordInfo {
        std::vector<std::string> characters;  // textLowered in user-perceived characters
        bool isVariable = false;
        std::string variableKey;
        std::string completorKey;
    };

    // The words of a sentence prepared for matching: joined lower-case text cut
    // into characters once, and where each word starts. A tail of the sentence is
    // read through `firstWord` without copying.
    class Input {
    public:
        explicit Input(std::vector<SentenceComponent> words);

        const std::vector<SentenceComponent>& words() const { return inputWords; }

    private:
        friend class SentenceTemplate;
        std::vector<SentenceComponent> inputWords;
        std::string text;
        std::vector<std::string_view> characters;
        std::vector<int> starts;   // character index where each word begins
        std::vector<int> lengths;  // character count of each word
    };

    // The state of one template word during one match.
    struct TemplateWordStatistics {
        enum class Answer { noMatch, keepGoing, wordDone, parsed, completed };
        struct AddAnswer {
            Answer answer = Answer::noMatch;
            int count = 0;
        };

        const SentenceComponent* word = nullptr;  // points into the template
        const WordInfo* info = nullptr;
        int charactersMatched = 0;
        int currentOffset = 0;
        std::optional<VariableParserResult> variableParserResult;
        std::string variableCompletion;
        std::vector<SentenceComponent> consumedParts;

        Answer findCharIn(std::string_view c);
        AddAnswer add(std::span<const SentenceComponent> words, const VariableParsers& parsers,
                      const VariableCompletors& completors);
    };

    struct TemplateWordStatsResult {
        const SentenceTemplate* sentenceTemplate = nullptr;  // the template that matched; outlives the result
        int numberOfKeywordsMatched = 0;
        int numberOfCharactersMatched = 0;
        std::string prediction;
        CharacterRange position;
        std::vector<TemplateWordStatistics> stats;

        std::vector<SentenceComponent> consumedParts() const;
    };

    // A line with no words gives a template with no words and an empty command.
    explicit SentenceTemplate(std::string_view line);

    std::string debugTemplate;
    std::vector<SentenceComponent> components;
    std::vector<std::string> words;
    std::string command;
    int numberOfKeywords = 0;
    TemplateFlags flags;

    static bool isVariable(const SentenceComponent& word);
    // "~string/~remembered" parses by "~string" and completes by "~remembered".
    static std::string variableKey(const SentenceComponent& word);
    static std::string completorKey(const SentenceComponent& word);

    // Matches this template against the start of `input`. Zero or one result.
    std::vector<TemplateWordStatsResult> processInput(int startPosition, bool fullkeywordsOnly,
                                                      const std::vector<SentenceComponent>& input,
                                                      const VariableParsers& variableParsers,
                                                      const VariableCompletors& variableCompletors) const;
    // The same on the tail of a prepared sentence that begins at word `firstWord`.
    std::vector<TemplateWordStatsResult> processInput(int startPosition, bool fullkeywordsOnly, const Input& input,
                                                      size_t firstWord, const VariableParsers& variableParsers,
                                                      const VariableCompletors& variableCompletors) const;

private:
    std::vector<WordInfo> wordInfos;
};

using TemplateWordStatsResult = SentenceTemplate::TemplateWordStatsResult;

}  // namespace quester
