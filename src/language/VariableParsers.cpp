#include "language/VariableParsers.h"

#include <unicode/regex.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <memory>

#include "language/ContentSearchFlag.h"
#include "language/DateCommandWhat.h"
#include "language/DateCommandWhen.h"
#include "language/DateDetector.h"
#include "language/DateHelper.h"
#include "language/FileSizeArgs.h"
#include "language/ScriptTarget.h"
#include "language/SpelledNumber.h"
#include "language/TimeUnit.h"
#include "language/UTIWords.h"
#include "language/UnicodeText.h"
#include "support/PathText.h"

namespace quester {

namespace {

VariableParserResult consumed(std::any value, size_t count) {
    return {std::move(value), static_cast<int>(count)};
}

std::optional<int> decimalInteger(std::string_view text) {
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    int value = 0;
    const auto [last, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || last != text.data() + text.size()) return std::nullopt;
    return value;
}

std::optional<int> integerInRange(std::span<const SentenceComponent> words, int lowest, int beyond) {
    if (words.empty()) return std::nullopt;
    const std::string_view text = words.front().textLowered;
    if (text.empty() || text.front() < '0' || text.front() > '9') return std::nullopt;
    const std::optional<int> value = decimalInteger(text);
    if (!value || *value < lowest || *value >= beyond) return std::nullopt;
    return value;
}

template <typename T>
std::vector<T> listFrom(const std::function<std::vector<T>()>& source) {
    return source ? source() : std::vector<T>();
}

std::vector<std::string> keysOf(const std::vector<std::pair<std::string, std::string>>& pairs) {
    std::vector<std::string> keys;
    for (const auto& pair : pairs) keys.push_back(pair.first);
    return keys;
}

// The name by which a script is typed: its file name without extension, in lower
// case, with no blanks ("Tidy Up.sh" is "tidyup").
std::string scriptWord(const std::string& path) {
    std::string name = lastPathComponent(path);
    if (const size_t dot = name.find_last_of('.'); dot != std::string::npos && dot > 0) name.erase(dot);
    std::string word = lowercased(name);
    std::erase(word, ' ');
    return word;
}

std::string joinedLowered(std::span<const SentenceComponent> words, size_t count) {
    std::string text;
    for (size_t i = 0; i < count; ++i) {
        if (i > 0) text += ' ';
        text += words[i].textLowered;
    }
    return text;
}

// Spelled-out numbers over as many leading words as read as one, then a unit.
// `tried` tells whether the first word read as a number at all.
std::optional<VariableParserResult> spelledFileSize(std::span<const SentenceComponent> words, bool& tried) {
    std::optional<double> value;
    size_t used = 0;
    for (size_t count = 1; count <= words.size(); ++count) {
        const std::optional<double> parsed = spelledNumber(joinedLowered(words, count));
        if (!parsed) break;
        value = parsed;
        used = count;
    }
    tried = used > 0;
    if (!tried || used >= words.size()) return std::nullopt;
    const std::optional<SizeUnits> units = sizeUnitsFromString(words[used].textLowered);
    if (!units) return std::nullopt;
    return consumed(FileSizeArgs{static_cast<double>(static_cast<float>(*value)), *units}, used + 1);
}

// "10mb" as digits and points, then the rest.
std::pair<std::optional<double>, std::string> splitNumberAndWord(std::string_view word) {
    std::string number;
    std::string rest;
    for (char c : word) {
        const bool point = c == '.' && number.find('.') == std::string::npos;
        if ((c >= '0' && c <= '9') || point) {
            number += c;
        } else {
            rest += c;
        }
    }
    double value = 0;
    const auto [last, error] =
        std::from_chars(number.data(), number.data() + number.size(), value, std::chars_format::fixed);
    if (number.empty() || error != std::errc() || last != number.data() + number.size()) return {std::nullopt, rest};
    return {value, rest};
}

const std::vector<std::pair<std::vector<SentenceComponent>, ContentSearchFlag>>& contentSearchPhrases() {
    static const std::vector<std::pair<std::vector<SentenceComponent>, ContentSearchFlag>> phrases = [] {
        const std::pair<std::string_view, ContentSearchFlag> texts[] = {
            {"whole words", ContentSearchFlag::wholeWords},       {"all words", ContentSearchFlag::allWords},
            {"all files", ContentSearchFlag::allFiles},           {"use OCR", ContentSearchFlag::useOCR},
            {"case sensitive", ContentSearchFlag::caseSensitive},
        };
        std::vector<std::pair<std::vector<SentenceComponent>, ContentSearchFlag>> list;
        for (const auto& [text, flag] : texts) list.emplace_back(SentenceComponent::parseWords(text), flag);
        return list;
    }();
    return phrases;
}

std::vector<std::string> monthCandidates() {
    std::vector<std::string> names = DateHelper::shared().monthSymbols();
    const std::vector<std::string>& shortNames = DateHelper::shared().shortMonthSymbols();
    names.insert(names.end(), shortNames.begin(), shortNames.end());
    return names;
}

std::optional<std::string> completeFirstWord(const std::vector<std::string>& candidates,
                                             std::span<const SentenceComponent> words) {
    if (words.empty()) return std::nullopt;
    return possibleCompletion(candidates, words.front().textLowered);
}

}  // namespace

std::optional<std::string> possibleCompletion(const std::vector<std::string>& candidates, std::string_view target) {
    if (target.empty()) return std::nullopt;
    for (const std::string& candidate : candidates) {
        if (candidate != target && lowercased(candidate).starts_with(target)) return candidate;
    }
    return std::nullopt;
}

std::optional<VariableParserResult> stringVariable(std::span<const SentenceComponent> words) {
    if (words.empty()) return std::nullopt;
    return consumed(words.front(), 1);
}

std::optional<VariableParserResult> utiVariable(std::span<const SentenceComponent> words) {
    if (words.empty()) return std::nullopt;
    const std::string& word = words.front().textLowered;
    if (word == "folder" || utiCompletor(words)) return std::nullopt;
    return consumed(word, 1);
}

std::optional<VariableParserResult> rememberedVariable(std::span<const SentenceComponent> words,
                                                       const VariableSources& sources) {
    if (words.empty()) return std::nullopt;
    for (const auto& [keyword, path] : listFrom(sources.rememberedFolders)) {
        if (lowercased(keyword) == words.front().textLowered) return consumed(path, 1);
    }
    return std::nullopt;
}

std::optional<VariableParserResult> monthVariable(std::span<const SentenceComponent> words) {
    if (words.empty()) return std::nullopt;
    const std::optional<int> month = DateHelper::shared().monthIndexFromWord(words.front().textLowered);
    if (!month) return std::nullopt;
    return consumed(*month, 1);
}

std::optional<VariableParserResult> yearVariable(std::span<const SentenceComponent> words) {
    const std::optional<int> year = integerInRange(words, 1970, 3000);
    if (!year) return std::nullopt;
    return consumed(*year, 1);
}

std::optional<VariableParserResult> dayVariable(std::span<const SentenceComponent> words) {
    const std::optional<int> day = integerInRange(words, 1, 32);
    if (!day) return std::nullopt;
    return consumed(*day, 1);
}

std::optional<VariableParserResult> timeUnitVariable(std::span<const SentenceComponent> words) {
    if (words.empty()) return std::nullopt;
    const std::optional<TimeUnit> unit = timeUnitFromWord(words.front().textLowered);
    if (!unit) return std::nullopt;
    return consumed(*unit, 1);
}

std::optional<VariableParserResult> formattedDateVariable(std::span<const SentenceComponent> words) {
    if (words.empty()) return std::nullopt;
    const std::string& word = words.front().textLowered;
    if (std::none_of(word.begin(), word.end(), [](char c) { return c >= '0' && c <= '9'; })) return std::nullopt;
    const std::vector<Date> dates = DateDetector::simpleDatesInString(word);
    if (dates.empty()) return std::nullopt;
    return consumed(DateCommandWhen{WhenType::specificDay, dates.front(), std::nullopt}, 1);
}

std::optional<VariableParserResult> fixedNamedTimeRangeVariable(std::span<const SentenceComponent> words) {
    if (words.empty()) return std::nullopt;
    static constexpr std::pair<std::string_view, WhenType> names[] = {{"recent", WhenType::recent},
                                                                      {"today", WhenType::today},
                                                                      {"yesterday", WhenType::yesterday},
                                                                      {"tomorrow", WhenType::tomorrow}};
    for (const auto& [name, when] : names) {
        if (words.front().textLowered == name) return consumed(DateCommandWhen{when, std::nullopt, std::nullopt}, 1);
    }
    return std::nullopt;
}

std::optional<VariableParserResult> fileSizeVariable(std::span<const SentenceComponent> words) {
    if (words.empty()) return std::nullopt;
    bool firstWordWasNumber = false;
    if (auto spelled = spelledFileSize(words, firstWordWasNumber)) return spelled;
    if (firstWordWasNumber) return std::nullopt;
    const auto [number, rest] = splitNumberAndWord(words.front().textLowered);
    if (!number) return std::nullopt;
    if (const std::optional<SizeUnits> units = sizeUnitsFromString(rest))
        return consumed(FileSizeArgs{*number, *units}, 1);
    if (words.size() < 2) return std::nullopt;
    if (const std::optional<SizeUnits> units = sizeUnitsFromString(words[1].textLowered)) {
        return consumed(FileSizeArgs{*number, *units}, 2);
    }
    return std::nullopt;
}

std::optional<VariableParserResult> extensionVariable(std::span<const SentenceComponent> words) {
    if (words.empty()) return std::nullopt;
    const std::string& word = words.front().textOriginalCase;
    if (word.size() < 2 || word.front() != '.') return std::nullopt;
    return consumed(word.substr(1), 1);
}

std::optional<VariableParserResult> dateTypeVariable(std::span<const SentenceComponent> words) {
    if (words.empty()) return std::nullopt;
    if (const std::optional<DateCommandWhat> what = dateCommandWhatFromWord(words.front().textLowered))
        return consumed(*what, 1);
    return consumed(DateCommandWhat::modificationDate, 0);
}

std::optional<VariableParserResult> integerVariable(std::span<const SentenceComponent> words) {
    if (words.empty()) return std::nullopt;
    const std::string& word = words.front().textLowered;
    if (const std::optional<int> value = decimalInteger(word)) return consumed(*value, 1);
    const std::optional<double> spelled = spelledNumber(word);
    if (!spelled || std::floor(*spelled) != *spelled || std::fabs(*spelled) > std::numeric_limits<int>::max())
        return std::nullopt;
    return consumed(static_cast<int>(*spelled), 1);
}

std::optional<VariableParserResult> regexVariable(std::span<const SentenceComponent> words) {
    if (words.empty()) return std::nullopt;
    const std::string& pattern = words.front().textOriginalCase;
    UErrorCode status = U_ZERO_ERROR;
    UParseError parseError;
    const icu::UnicodeString unicode =
        icu::UnicodeString::fromUTF8(icu::StringPiece(pattern.data(), static_cast<int32_t>(pattern.size())));
    std::unique_ptr<icu::RegexPattern> compiled(
        icu::RegexPattern::compile(unicode, UREGEX_CASE_INSENSITIVE, parseError, status));
    if (U_FAILURE(status) || !compiled) return std::nullopt;
    return consumed(words.front(), 1);
}

std::optional<VariableParserResult> scriptNameVariable(std::span<const SentenceComponent> words,
                                                       const VariableSources& sources) {
    if (words.empty() || words.front().textLowered == "mail") return std::nullopt;
    for (const std::string& path : listFrom(sources.scriptPaths)) {
        if (scriptWord(path) == words.front().textLowered)
            return consumed(ScriptTarget{ScriptTarget::Kind::appleScript, path}, 1);
    }
    for (const std::string& name : listFrom(sources.shortcutNames)) {
        const SentenceCompareResult match = compare(words, SentenceComponent::parseWords(name));
        if (match.matched && match.numberOfWordsUsed > 0) {
            return consumed(ScriptTarget{ScriptTarget::Kind::shortcut, name},
                            static_cast<size_t>(match.numberOfWordsUsed));
        }
    }
    return std::nullopt;
}

std::optional<VariableParserResult> contentSearchVariable(std::span<const SentenceComponent> words) {
    std::vector<ContentSearchFlag> flags;
    std::span<const SentenceComponent> rest = words;
    size_t used = 0;
    for (const auto& [phrase, flag] : contentSearchPhrases()) {
        const SentenceCompareResult match = compare(rest, phrase);
        if (!match.matched) continue;
        flags.push_back(flag);
        used += static_cast<size_t>(match.numberOfWordsUsed);
        rest = rest.subspan(static_cast<size_t>(match.numberOfWordsUsed));
    }
    return consumed(flags, used);
}

std::optional<VariableParserResult> varArgVariable(std::span<const SentenceComponent> words) {
    if (words.empty()) return VariableParserResult{};
    return consumed(std::vector<SentenceComponent>(words.begin(), words.end()), words.size());
}

std::optional<std::string> utiCompletor(std::span<const SentenceComponent> words) {
    static const std::vector<std::string> keys = keysOf(specialCaseToUTI());
    return completeFirstWord(keys, words);
}

std::optional<std::string> rememberedCompletor(std::span<const SentenceComponent> words,
                                               const VariableSources& sources) {
    return completeFirstWord(keysOf(listFrom(sources.rememberedFolders)), words);
}

std::optional<std::string> monthCompletor(std::span<const SentenceComponent> words) {
    if (words.empty()) return std::nullopt;
    return possibleCompletion(monthCandidates(), words[words.size() > 1 ? 1 : 0].textLowered);
}

std::optional<std::string> dateTypeCompletor(std::span<const SentenceComponent> words) {
    static const std::vector<std::string> names = {"modified", "changed", "edited", "created", "made"};
    return completeFirstWord(names, words);
}

std::optional<std::string> scriptNameCompletor(std::span<const SentenceComponent> words,
                                               const VariableSources& sources) {
    std::vector<std::string> names;
    for (const std::string& path : listFrom(sources.scriptPaths)) names.push_back(scriptWord(path));
    for (const std::string& name : listFrom(sources.shortcutNames)) {
        for (const SentenceComponent& word : SentenceComponent::parseWords(name)) names.push_back(word.textLowered);
    }
    return completeFirstWord(names, words);
}

std::optional<std::string> tagCompletor(std::span<const SentenceComponent> words, const VariableSources& sources) {
    std::vector<std::string> tags = listFrom(sources.knownTags);
    std::sort(tags.begin(), tags.end());
    for (std::string& tag : tags) tag = lowercased(tag);
    return completeFirstWord(tags, words);
}

VariableParsers standardVariableParsers(const VariableSources& sources) {
    return {
        {"~string", stringVariable},
        {"~uti", utiVariable},
        {"~remembered",
         [sources](std::span<const SentenceComponent> words) { return rememberedVariable(words, sources); }},
        {"~month", monthVariable},
        {"~year", yearVariable},
        {"~day", dayVariable},
        {"~timeUnit", timeUnitVariable},
        {"~formattedDate", formattedDateVariable},
        {"~fixedNamedTimeRange", fixedNamedTimeRangeVariable},
        {"~file size", fileSizeVariable},
        {"~extension", extensionVariable},
        {"~dateType", dateTypeVariable},
        {"~integer", integerVariable},
        {"~regexVariable", regexVariable},
        {"~scriptName",
         [sources](std::span<const SentenceComponent> words) { return scriptNameVariable(words, sources); }},
        {"~contentSearchFlags", contentSearchVariable},
        {"~varArg", varArgVariable},
    };
}

VariableCompletors standardVariableCompletors(const VariableSources& sources) {
    return {
        {"~utiCompletor", utiCompletor},
        {"~remembered",
         [sources](std::span<const SentenceComponent> words) { return rememberedCompletor(words, sources); }},
        {"~month", monthCompletor},
        {"~dateType", dateTypeCompletor},
        {"~scriptName",
         [sources](std::span<const SentenceComponent> words) { return scriptNameCompletor(words, sources); }},
        {"~tagCompletor", [sources](std::span<const SentenceComponent> words) { return tagCompletor(words, sources); }},
    };
}

}  // namespace quester
