#include "query/QueryContainer.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>

#include "language/BooleanParser.h"
#include "language/LanguageParse.h"
#include "language/UnicodeText.h"
#include "platform/FileSystem.h"
#include "platform/PathText.h"
#include "query/CommandClassName.h"
#include "query/CommandWithScope.h"
#include "query/NotIncludingWords.h"
#include "query/Soundex.h"
#include "query/WildcardWords.h"

namespace quester {

namespace {

using Words = std::vector<SentenceComponent>;

// Two mentions of one word of the sentence: the same text, typed the same way,
// at the same place.
bool samePart(const SentenceComponent& a, const SentenceComponent& b) {
    return a.position == b.position && a.textLowered == b.textLowered && a.textOriginalCase == b.textOriginalCase;
}

bool containsPart(const Words& words, const SentenceComponent& word) {
    return std::any_of(words.begin(), words.end(), [&](const SentenceComponent& w) { return samePart(w, word); });
}

void appendUnique(Words& words, const Words& more) {
    for (const auto& word : more) {
        if (!containsPart(words, word)) words.push_back(word);
    }
}

bool isStructuralParen(const SentenceComponent& word) {
    return !word.wasInQuotes && (word.textOriginalCase == "(" || word.textOriginalCase == ")");
}

bool isBareOr(const SentenceComponent& word) { return !word.wasInQuotes && word.textLowered == "or"; }

bool isMinusWord(const SentenceComponent& word) { return !word.wasInQuotes && word.textOriginalCase.starts_with('-'); }

bool isBooleanLeaf(const Command& command) {
    return command.commandSupportsBooleanCombination() || !command.suppliedDataSources().empty();
}

bool isExistingDirectory(const std::string& path) {
    const auto status = FileSystem::real().status(path);
    return status && status->isDirectory();
}

bool isSplitCharacter(std::string_view character) {
    UChar32 scalar = 0;
    int32_t offset = 0;
    U8_NEXT(reinterpret_cast<const uint8_t*>(character.data()), offset, static_cast<int32_t>(character.size()), scalar);
    if (scalar < 0) return false;
    if (u_isUWhiteSpace(scalar) || scalar == '\n' || scalar == '\r' || u_ispunct(scalar)) return true;
    int8_t type = u_charType(scalar);
    return type == U_MATH_SYMBOL || type == U_CURRENCY_SYMBOL || type == U_MODIFIER_SYMBOL || type == U_OTHER_SYMBOL;
}

int displayPriority(const Command& command) {
    std::string name = commandClassName(command);
    if (name == "CaseSensitive") return 0;
    if (name == "ExactNameCommand") return 100;
    if (name == "ContentSearchCommand") return 300;
    return 200;
}

std::string upToFirstPoint(const std::string& text) { return text.substr(0, text.find('.')); }

std::string joinedTexts(const Words& words) {
    std::string text;
    for (const auto& word : words) {
        if (!text.empty()) text += ' ';
        text += word.textOriginalCase;
    }
    return text;
}

}  // namespace

QueryContainer::QueryContainer(QueryPreferences preferences)
    : wantsDiacriticInsensitiveSearch(preferences.diacriticInsensitiveSearch),
      showAppsFromAnywhere(preferences.showAppsFoundAnywhere) {}

QueryContainer::QueryContainer(std::string_view text, const LanguageParse& parser,
                               std::optional<SearchLocation> location, bool soundexMatching,
                               QueryPreferences preferences)
    : QueryContainer(preferences) {
    baseString = std::string(text);
    std::replace(baseString.begin(), baseString.end(), '\n', ' ');
    baseStringLowercase = lowercased(baseString);
    soundex = soundexMatching;
    whereLocation = std::move(location);
    allWords = SentenceComponent::parseWords(baseString, nullptr, true);

    parseCommands(parser);
    sortCommands();
    for (const auto& command : commandsFoundInQuery) {
        const auto* scoped = dynamic_cast<const CommandWithScope*>(command.get());
        auto path = scoped ? scoped->scopePath() : std::nullopt;
        if (path && isExistingDirectory(*path)) {
            whereLocation = SearchLocation::fromURLs({Url(*path, true)}, lastPathComponent(*path));
            break;
        }
    }
    matchIsCaseSensitive = hasCommand("CaseSensitive");
    matchWholeWords = hasCommand("WholeWords");
    matchExactName = hasCommand("ExactNameCommand");
    classifyWords();
    addCommandsForSearchWords();
    collectSearchWords();
    buildBooleanExpr();
    addCommandStrings();
    matchExpr = matchExactName ? booleanExpr.collapsedForExact() : booleanExpr;
    querySearchArguments = computeQuerySearchArguments();
    for (const auto& word : searchWords) searchWordStringsSoundexValues.push_back(Soundex::value(word));
}

void QueryContainer::parseCommands(const LanguageParse& parser) {
    Words commandWords;
    std::copy_if(allWords.begin(), allWords.end(), std::back_inserter(commandWords),
                 [](const SentenceComponent& word) { return word.isAfterAColon; });
    CommandRecogniserResult parsed = parser.makeCommands(commandWords);
    commandsFoundInQuery = std::move(parsed.commands);
    allRecoginsedParts = std::move(parsed.consumedParts);
    for (const auto& command : commandsFoundInQuery) appendUnique(allRecoginsedParts, command->commandConsumedParts());
}

// Cheap name tests first, content reading last.
void QueryContainer::sortCommands() {
    auto rank = [](const CommandPtr& command) {
        std::string name = commandClassName(*command);
        if (name == "ExtensionCommand") return 0;
        if (name == "ContentSearchCommand") return 2;
        return 1;
    };
    std::stable_sort(commandsFoundInQuery.begin(), commandsFoundInQuery.end(),
                     [&](const CommandPtr& a, const CommandPtr& b) { return rank(a) < rank(b); });
}

void QueryContainer::classifyWords() {
    auto colon = std::find_if(allWords.begin(), allWords.end(), [](const SentenceComponent& w) { return w.isAfterAColon; });
    Words commandArea(colon, allWords.end());

    auto shortcut = std::find_if(commandArea.begin(), commandArea.end(),
                                 [](const SentenceComponent& w) { return w.textLowered == "shortcut"; });
    if (shortcut != commandArea.end() && shortcut + 1 != commandArea.end()) {
        shortcutKeywordName = joinedTexts(Words(shortcut + 1, commandArea.end()));
    }
    for (const auto& word : allWords) {
        if (word.isBooleanOperator()) booleanOperatorWords.push_back(word);
        if (isStructuralParen(word)) structuralParenWords.push_back(word);
    }

    Words consumed;
    for (const auto& command : commandsFoundInQuery) appendUnique(consumed, command->commandConsumedParts());
    for (const auto& word : commandArea) {
        if (!isRecognised(word) && !word.isBooleanOperator()) unusedCommandAreaWords.push_back(word);
        if (!containsPart(consumed, word) && !isStructuralParen(word) && !word.isBooleanOperator()) {
            invalidCommandAreaWords.push_back(word);
        }
    }
    for (const auto& word : allWords) {
        if (!isRecognised(word) && !isStructuralParen(word)) searchWordParts.push_back(word);
    }
    for (const auto& word : searchWordParts) {
        if (word.isAfterAColon) continue;
        wordsBeforeColon.push_back(word);
        (isMinusWord(word) ? searchWordsWithMinus : searchWordsWithoutMinus).push_back(word);
    }
}

void QueryContainer::addCommandsForSearchWords() {
    if (!searchWordsWithMinus.empty()) {
        std::vector<std::string> rawWords;
        for (const auto& word : searchWordsWithMinus) rawWords.push_back(word.textLowered);
        commandsFoundInQuery.push_back(std::make_shared<NotIncludingWords>(std::move(rawWords)));
    }
    Words wildcardWords;
    std::copy_if(searchWordsWithoutMinus.begin(), searchWordsWithoutMinus.end(), std::back_inserter(wildcardWords),
                 [](const SentenceComponent& w) { return w.wildcard != SentenceComponent::Wildcard::none; });
    if (!wildcardWords.empty()) commandsFoundInQuery.push_back(std::make_shared<WildcardWords>(std::move(wildcardWords)));
}

void QueryContainer::collectSearchWords() {
    for (const auto& word : searchWordsWithoutMinus) {
        if (isBareOr(word)) {
            includesORStatement = true;
            continue;
        }
        searchWords.push_back(word.textLowered);
        searchWordsOriginalCase.push_back(word.textOriginalCase);
    }
    if (includesORStatement) {
        std::vector<std::string> group;
        for (const auto& word : wordsBeforeColon) {
            if (!isBareOr(word)) {
                group.push_back(lowercased(word.textOriginalCase));
                continue;
            }
            if (!group.empty()) orStringGroups.push_back(std::move(group));
            group.clear();
        }
        if (!group.empty()) orStringGroups.push_back(std::move(group));
    }
    searchWordsHighlightStrings = matchIsCaseSensitive ? searchWordsOriginalCase : searchWords;
}

void QueryContainer::buildBooleanExpr() {
    std::vector<std::pair<SentenceComponent, int>> partMap;
    for (size_t index = 0; index < commandsFoundInQuery.size(); ++index) {
        const Command& command = *commandsFoundInQuery[index];
        if (!isBooleanLeaf(command)) continue;
        for (const auto& part : command.commandConsumedParts()) partMap.emplace_back(part, static_cast<int>(index));
    }
    auto commandForPart = [&](const SentenceComponent& word) -> std::optional<int> {
        for (auto entry = partMap.rbegin(); entry != partMap.rend(); ++entry) {
            if (samePart(entry->first, word)) return entry->second;
        }
        return std::nullopt;
    };
    auto recognised = [&](const SentenceComponent& word) { return isRecognised(word); };
    booleanExpr = BooleanParser::parse(BooleanParser::tokenizeUnified(allWords, recognised, commandForPart));
}

void QueryContainer::addCommandStrings() {
    for (size_t index = 0; index < commandsFoundInQuery.size(); ++index) {
        const Command& command = *commandsFoundInQuery[index];
        bool underOr = isBooleanLeaf(command) && booleanExpr.hasCommandLeafUnderOr({static_cast<int>(index)});
        if (!underOr) {
            auto extra = command.commandImpExtraSearchStrings();
            searchWords.insert(searchWords.end(), extra.begin(), extra.end());
        }
        auto highlights = command.commandExtraHighlightStrings();
        searchWordsHighlightStrings.insert(searchWordsHighlightStrings.end(), highlights.begin(), highlights.end());
    }
}

QuerySearchArguments QueryContainer::computeQuerySearchArguments() const {
    QuerySearchArguments arguments;
    if (!booleanExpr.hasCommandUnderOr()) {
        for (const auto& command : commandsFoundInQuery) command->commandImpQuerySearchArguments(arguments);
    }
    if (!arguments.word && !searchWords.empty()) arguments.word = searchWords.front();
    return arguments;
}

bool QueryContainer::isRecognised(const SentenceComponent& word) const { return containsPart(allRecoginsedParts, word); }

std::string QueryContainer::debugDescription() const {
    std::string text = baseString + ": ";
    for (size_t i = 0; i < commandsFoundInQuery.size(); ++i) {
        if (i > 0) text += ", ";
        text += commandsFoundInQuery[i]->debugDescription();
    }
    return text;
}

std::vector<std::shared_ptr<SearchDataSource>> QueryContainer::suppliedDataSources() const {
    std::vector<std::shared_ptr<SearchDataSource>> sources;
    for (const auto& command : commandsFoundInQuery) {
        auto supplied = command->suppliedDataSources();
        sources.insert(sources.end(), supplied.begin(), supplied.end());
    }
    return sources;
}

std::vector<CommandPtr> QueryContainer::copyCommandsFoundInQuery() const {
    std::vector<CommandPtr> copies;
    for (const auto& command : commandsFoundInQuery) copies.push_back(command->copy());
    return copies;
}

std::vector<CommandPtr> QueryContainer::commandsFoundInQueryForDisplay() const {
    std::vector<CommandPtr> shown;
    for (const auto& command : commandsFoundInQuery) {
        std::string name = commandClassName(*command);
        if (name != "NotIncludingWords" && name != "WildcardWords") shown.push_back(command);
    }
    std::stable_sort(shown.begin(), shown.end(),
                     [](const CommandPtr& a, const CommandPtr& b) { return displayPriority(*a) < displayPriority(*b); });
    return shown;
}

std::string QueryContainer::searchWordsWithMinusString() const {
    std::string text;
    for (const auto& word : searchWordsWithMinus) {
        if (!text.empty()) text += ' ';
        text += word.textOriginalCase.substr(1);
    }
    return text;
}

CommandPtr QueryContainer::findCommand(std::string_view className) const {
    for (const auto& command : commandsFoundInQuery) {
        if (commandClassName(*command) == className) return command;
    }
    return nullptr;
}

std::set<int> QueryContainer::dataSourceLeafIndices() const {
    std::set<int> indices;
    for (int index : booleanExpr.commandLeafIndices()) {
        if (index >= 0 && static_cast<size_t>(index) < commandsFoundInQuery.size() &&
            !commandsFoundInQuery[index]->suppliedDataSources().empty()) {
            indices.insert(index);
        }
    }
    return indices;
}

bool QueryContainer::booleanExprUsesDataSourceOr() const {
    auto indices = dataSourceLeafIndices();
    return !indices.empty() && booleanExpr.hasCommandLeafUnderOr(indices);
}

BooleanExpr::EvalContext QueryContainer::makeEvalContext(bool diacriticInsensitive,
                                                         std::function<bool(int)> evaluateCommand) const {
    BooleanExpr::EvalContext context;
    context.caseSensitive = matchIsCaseSensitive;
    context.wholeWords = matchWholeWords;
    context.exactName = matchExactName;
    context.diacriticInsensitive = diacriticInsensitive;
    context.wordSplitter = &QueryContainer::wholeWordsFromFileName;
    context.evaluateCommand = std::move(evaluateCommand);
    return context;
}

bool QueryContainer::isWordBasedSearch() const {
    auto any = [&](auto predicate) { return std::any_of(commandsFoundInQuery.begin(), commandsFoundInQuery.end(), predicate); };
    if (any([](const CommandPtr& c) { return c->commandStopsWordBasedSearches(); })) return false;
    if (any([](const CommandPtr& c) { return !c->commandIsOnlyAFilter(); })) return true;
    return !searchWords.empty();
}

bool QueryContainer::isORCommandSearch() const {
    if (!includesORStatement || searchWordParts.empty()) return false;
    const SentenceComponent& last = searchWordParts.back();
    return last.textLowered == "or" && !last.wasInQuotes && !last.isAfterAColon;
}

bool QueryContainer::fsItemNameStringIncludesWordsFromQuery(std::string_view name, bool diacriticInsensitive) const {
    if (!soundex) {
        return matchExpr.matches(name, makeEvalContext(diacriticInsensitive || wantsDiacriticInsensitiveSearch, {}));
    }
    std::string last = lastPathComponent(name);
    std::vector<std::string> values;
    size_t start = 0;
    while (start <= last.size()) {
        size_t end = last.find_first_of(" ./", start);
        if (end == std::string::npos) end = last.size();
        if (end > start) values.push_back(Soundex::value(std::string_view(last).substr(start, end - start)));
        start = end + 1;
    }
    return std::any_of(searchWordStringsSoundexValues.begin(), searchWordStringsSoundexValues.end(),
                       [&](const std::string& value) { return std::find(values.begin(), values.end(), value) != values.end(); });
}

bool QueryContainer::pathIsInQueryLocation(const std::string& path) const {
    if (showAppsFromAnywhere && pathExtension(path) == "app" &&
        upToFirstPoint(lowercased(lastPathComponent(path))) == upToFirstPoint(baseStringLowercase)) {
        return true;
    }
    if (!whereLocation) return true;
    if (!querySearchArguments.checkPathForResults) return true;
    return whereLocation->pathIsInLocation(path);
}

bool QueryContainer::isPossibleMatch(std::string_view path, bool diacriticInsensitive) const {
    // The whole path lets a word that only a folder's name holds through, to be
    // judged by the item's name later. That widening is wrong for a negated
    // word: "budget -old" would drop everything under a folder named "old",
    // so then only the name is tested, as the final judgement will.
    std::string lastName;
    std::string_view tested = path;
    if (booleanExpr.hasNegation()) tested = lastName = lastPathComponent(path);
    if (commandsFoundInQuery.empty()) {
        return !searchWords.empty() && fsItemNameStringIncludesWordsFromQuery(tested, diacriticInsensitive);
    }
    if (isORCommandSearch() || booleanExpr.hasCommandUnderOr()) return true;
    return fsItemNameStringIncludesWordsFromQuery(tested, diacriticInsensitive);
}

std::vector<std::string> QueryContainer::wholeWordsFromFileName(std::string_view name) {
    std::vector<std::string> pieces;
    std::string piece;
    for (std::string_view character : graphemes(name)) {
        if (isSplitCharacter(character)) {
            if (!piece.empty()) pieces.push_back(std::move(piece));
            piece.clear();
        } else {
            piece += character;
        }
    }
    if (!piece.empty()) pieces.push_back(std::move(piece));
    return pieces;
}

}  // namespace quester
