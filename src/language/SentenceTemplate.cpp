#include "language/SentenceTemplate.h"

#include <algorithm>

#include "language/UnicodeText.h"

namespace quester {

namespace {

using Stats = SentenceTemplate::TemplateWordStatistics;
using Answer = Stats::Answer;

std::vector<std::string> splitDropEmpty(std::string_view text, char separator) {
    std::vector<std::string> pieces;
    size_t begin = 0;
    while (begin <= text.size()) {
        size_t end = text.find(separator, begin);
        if (end == std::string_view::npos) end = text.size();
        if (end > begin) pieces.emplace_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return pieces;
}

std::vector<std::string> splitKeepEmpty(std::string_view text, char separator) {
    std::vector<std::string> pieces;
    size_t begin = 0;
    for (;;) {
        const size_t end = text.find(separator, begin);
        pieces.emplace_back(text.substr(begin, end == std::string_view::npos ? std::string_view::npos : end - begin));
        if (end == std::string_view::npos) return pieces;
        begin = end + 1;
    }
}

// The sentence as far as it is known: every word matched and the next to type.
std::string predict(const std::vector<Stats>& stats) {
    std::string text;
    for (const Stats& stat : stats) {
        if (!text.empty()) text += ' ';
        if (!stat.info->isVariable) {
            text += stat.word->textLowered;
        } else if (!stat.variableCompletion.empty()) {
            text += stat.variableCompletion;
        } else {
            for (size_t i = 0; i < stat.consumedParts.size(); ++i) {
                if (i > 0) text += ' ';
                text += stat.consumedParts[i].textLowered;
            }
        }
        if (stat.charactersMatched == 0) break;
    }
    return text;
}

// One walk of a template over the tail of an input that starts at `firstWord`.
class Matcher {
public:
    Matcher(const SentenceTemplate& sentenceTemplate, const std::vector<SentenceTemplate::WordInfo>& infos,
            const SentenceTemplate::Input& input, const std::vector<std::string_view>& characters,
            const std::vector<int>& starts, const std::vector<int>& lengths, size_t firstWord)
        : sentenceTemplate(sentenceTemplate),
          infos(infos),
          input(input),
          characters(characters),
          starts(starts),
          lengths(lengths),
          firstWord(firstWord),
          base(firstWord < starts.size() ? starts[firstWord] : static_cast<int>(characters.size())),
          length(static_cast<int>(characters.size()) - base) {}

    std::vector<SentenceTemplate::TemplateWordStatsResult> run(int startPosition, bool fullkeywordsOnly,
                                                               const VariableParsers& parsers,
                                                               const VariableCompletors& completors) {
        if (cannotStart()) return {};
        makeStats();
        walk(fullkeywordsOnly, parsers, completors);
        if (!failed) finishTrailingVariables(parsers, completors);
        SentenceTemplate::TemplateWordStatsResult result;
        result.sentenceTemplate = &sentenceTemplate;
        result.numberOfKeywordsMatched = keywordsMatched;
        for (const Stats& stat : stats) result.numberOfCharactersMatched += stat.charactersMatched;
        if (fullkeywordsOnly ? keywordsMatched < 1 : result.numberOfCharactersMatched < 1) return {};
        result.position = {startPosition, startPosition + i};
        result.prediction = predict(stats);
        result.stats = std::move(stats);
        std::vector<SentenceTemplate::TemplateWordStatsResult> results;
        results.push_back(std::move(result));
        return results;
    }

private:
    std::string_view at(int index) const { return characters[static_cast<size_t>(base + index)]; }

    // Most templates die on the first character: answer that without any allocation.
    bool cannotStart() const {
        if (infos.empty() || infos.front().isVariable || infos.front().characters.empty()) return false;
        int first = 0;
        while (first < length && at(first) == " ") ++first;
        return first < length && at(first) != infos.front().characters.front();
    }

    void makeStats() {
        stats.resize(infos.size());
        for (size_t k = 0; k < infos.size(); ++k) {
            stats[k].word = &sentenceTemplate.components[k];
            stats[k].info = &infos[k];
        }
    }

    // Index of the word (relative to the tail) that begins at character `index`, if any.
    std::optional<size_t> wordStartingAt(int index) const {
        const auto begin = starts.begin() + static_cast<std::ptrdiff_t>(firstWord);
        const auto found = std::lower_bound(begin, starts.end(), base + index);
        if (found == starts.end() || *found != base + index) return std::nullopt;
        return static_cast<size_t>(found - begin);
    }

    // The word (relative to the tail) that holds character `index`, from the last word backwards.
    size_t wordHolding(int index) const {
        for (size_t k = starts.size(); k > firstWord + 1; --k) {
            if (starts[k - 1] <= base + index) return k - 1 - firstWord;
        }
        return 0;
    }

    void walk(bool fullkeywordsOnly, const VariableParsers& parsers, const VariableCompletors& completors) {
        static const VariableCompletors none;
        while (i < length && !failed) {
            if (at(i) == " ") {
                while (i < length && at(i) == " ") ++i;
                if (i >= length) break;
            }
            if (si >= stats.size()) break;
            Stats& stat = stats[si];
            if (!stat.info->isVariable) {
                keyword(stat, stat.findCharIn(at(i)));
            } else {
                variable(stat, fullkeywordsOnly, parsers, fullkeywordsOnly ? none : completors);
            }
            ++i;
        }
    }

    void keyword(Stats& stat, Answer answer) {
        if (answer == Answer::noMatch) {
            failed = true;
        } else if (answer == Answer::wordDone) {
            ++keywordsMatched;
            ++si;
            stat.consumedParts = {input.words()[firstWord + wordHolding(i)]};
        }
    }

    void variable(Stats& stat, bool fullkeywordsOnly, const VariableParsers& parsers,
                  const VariableCompletors& completors) {
        const std::optional<size_t> k = wordStartingAt(i);
        std::vector<SentenceComponent> rest;
        std::span<const SentenceComponent> words;
        if (k) {
            words = std::span<const SentenceComponent>(input.words()).subspan(firstWord + *k);
        } else {
            const std::string_view text =
                input.words().empty() ? std::string_view()
                                      : std::string_view(at(i).data(), characters.back().data() +
                                                                           characters.back().size() - at(i).data());
            rest = SentenceComponent::parseWords(text, nullptr, false);
            words = rest;
        }
        const Stats::AddAnswer answer = stat.add(words, parsers, completors);
        if (answer.answer == Answer::noMatch) {
            failed = true;
            return;
        }
        ++si;
        if (answer.count == 0) {
            --i;
        } else {
            i += answer.answer == Answer::parsed ? spanOfConsumed(stat, k, rest) : answer.count;
        }
        const bool counts = answer.count > 0 || fullkeywordsOnly;
        if (answer.answer == Answer::parsed && counts) ++keywordsMatched;
    }

    // How many characters of the joined text the consumed words cover, blanks
    // between them included, so that the walk goes on right after the last one.
    int spanOfConsumed(const Stats& stat, std::optional<size_t> k, const std::vector<SentenceComponent>& rest) const {
        const size_t n = stat.consumedParts.size();
        if (n == 0) return 0;
        if (k) {
            const size_t last = firstWord + *k + n - 1;
            return starts[last] + lengths[last] - (base + i);
        }
        return rest[n - 1].position.upperBound;
    }

    void finishTrailingVariables(const VariableParsers& parsers, const VariableCompletors& completors) {
        for (; si < stats.size() && stats[si].info->isVariable; ++si) {
            const Stats::AddAnswer answer = stats[si].add({}, parsers, completors);
            if (answer.answer != Answer::parsed || answer.count != 0) return;
            ++keywordsMatched;
        }
    }

    const SentenceTemplate& sentenceTemplate;
    const std::vector<SentenceTemplate::WordInfo>& infos;
    const SentenceTemplate::Input& input;
    const std::vector<std::string_view>& characters;
    const std::vector<int>& starts;
    const std::vector<int>& lengths;
    const size_t firstWord;
    const int base;
    const int length;
    std::vector<Stats> stats;
    size_t si = 0;
    int i = 0;
    int keywordsMatched = 0;
    bool failed = false;
};

}  // namespace

SentenceTemplate::Input::Input(std::vector<SentenceComponent> words) : inputWords(std::move(words)) {
    for (const SentenceComponent& word : inputWords) {
        if (!text.empty()) text += ' ';
        text += word.textLowered;
    }
    characters = graphemes(text);
    int index = 0;
    for (const SentenceComponent& word : inputWords) {
        const int count = graphemeCount(word.textLowered);
        starts.push_back(index);
        lengths.push_back(count);
        index += count + 1;
    }
}

Answer Stats::findCharIn(std::string_view c) {
    const auto offset = static_cast<size_t>(currentOffset);
    if (offset >= info->characters.size() || info->characters[offset] != c) return Answer::noMatch;
    ++currentOffset;
    ++charactersMatched;
    return static_cast<size_t>(currentOffset) < info->characters.size() ? Answer::keepGoing : Answer::wordDone;
}

Stats::AddAnswer Stats::add(std::span<const SentenceComponent> words, const VariableParsers& parsers,
                            const VariableCompletors& completors) {
    const auto parser = parsers.find(info->variableKey);
    if (parser == parsers.end()) return {};
    const int wordLength = static_cast<int>(info->characters.size());
    if (const auto completor = completors.find(info->completorKey); completor != completors.end()) {
        if (std::optional<std::string> completion = completor->second(words)) {
            variableCompletion = std::move(*completion);
            charactersMatched = graphemeCount(variableCompletion);
            return {Answer::completed, wordLength};
        }
    }
    std::optional<VariableParserResult> result = parser->second(words);
    if (!result) return {};
    const size_t consumed =
        std::clamp<size_t>(static_cast<size_t>(std::max(result->numberOfConsumedWords, 0)), 0, words.size());
    consumedParts.assign(words.begin(), words.begin() + static_cast<std::ptrdiff_t>(consumed));
    charactersMatched = 0;
    for (const SentenceComponent& part : consumedParts) charactersMatched += graphemeCount(part.textLowered);
    variableParserResult = std::move(result);
    return {Answer::parsed, charactersMatched};
}

std::vector<SentenceComponent> SentenceTemplate::TemplateWordStatsResult::consumedParts() const {
    std::vector<SentenceComponent> parts;
    for (const TemplateWordStatistics& stat : stats)
        parts.insert(parts.end(), stat.consumedParts.begin(), stat.consumedParts.end());
    return parts;
}

SentenceTemplate::SentenceTemplate(std::string_view line) : debugTemplate(line) {
    std::vector<SentenceComponent> parts = SentenceComponent::parseWords(line, nullptr, false);
    if (parts.empty()) return;
    const std::string commandWord = parts.back().textOriginalCase;
    parts.pop_back();
    components = std::move(parts);
    for (const SentenceComponent& component : components) {
        words.push_back(component.textLowered);
        WordInfo info;
        for (std::string_view c : graphemes(component.textLowered)) info.characters.emplace_back(c);
        info.isVariable = isVariable(component);
        info.variableKey = variableKey(component);
        info.completorKey = completorKey(component);
        wordInfos.push_back(std::move(info));
    }
    numberOfKeywords = static_cast<int>(words.size());
    const std::vector<std::string> pieces = splitDropEmpty(commandWord, '/');
    if (!pieces.empty()) command = pieces.front();
    if (commandWord.find('/') == std::string::npos || pieces.empty()) return;
    for (const std::string& pair : splitDropEmpty(pieces.back(), ',')) {
        const std::vector<std::string> keyValue = splitKeepEmpty(pair, '=');
        if (keyValue.size() == 2) flags[keyValue[0]] = keyValue[1];
    }
}

bool SentenceTemplate::isVariable(const SentenceComponent& word) {
    return word.textLowered.starts_with('~');
}

std::string SentenceTemplate::variableKey(const SentenceComponent& word) {
    const std::vector<std::string> pieces = splitKeepEmpty(word.textOriginalCase, '/');
    return pieces.size() == 2 ? pieces[0] : word.textOriginalCase;
}

std::string SentenceTemplate::completorKey(const SentenceComponent& word) {
    const std::vector<std::string> pieces = splitKeepEmpty(word.textOriginalCase, '/');
    return pieces.size() == 2 ? pieces[1] : word.textOriginalCase;
}

std::vector<TemplateWordStatsResult> SentenceTemplate::processInput(
    int startPosition, bool fullkeywordsOnly, const std::vector<SentenceComponent>& input,
    const VariableParsers& variableParsers, const VariableCompletors& variableCompletors) const {
    const Input prepared(input);
    std::vector<TemplateWordStatsResult> results =
        processInput(startPosition, fullkeywordsOnly, prepared, 0, variableParsers, variableCompletors);
    return results;
}

std::vector<TemplateWordStatsResult> SentenceTemplate::processInput(
    int startPosition, bool fullkeywordsOnly, const Input& input, size_t firstWord,
    const VariableParsers& variableParsers, const VariableCompletors& variableCompletors) const {
    Matcher matcher(*this, wordInfos, input, input.characters, input.starts, input.lengths, firstWord);
    return matcher.run(startPosition, fullkeywordsOnly, variableParsers, variableCompletors);
}

}  // namespace quester
