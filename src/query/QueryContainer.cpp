#include "query/QueryContainer.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <fmt/core.h>

#include <algorithm>

#include "language/BooleanParser.h"
#include "language/QueryLimits.h"
#include "language/UnicodeText.h"
#include "platform/FileSystem.h"
#include "query/CommandRecogniser.h"
#include "query/CommandWithScope.h"
#include "query/NotIncludingWords.h"
#include "query/Soundex.h"
#include "query/WildcardWords.h"
#include "support/PathText.h"

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

bool isBareOr(const SentenceComponent& word) {
    return !word.wasInQuotes && word.textLowered == "or";
}

bool isMinusWord(const SentenceComponent& word) {
    return !word.wasInQuotes && word.textOriginalCase.starts_with('-');
}

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
    switch (command.commandRole()) {
        case CommandRole::caseSensitive:
            return 0;
        case CommandRole::exactName:
            return 100;
        case CommandRole::contentSearch:
            return 300;
        default:
            return 200;
    }
}

std::string upToFirstPoint(const std::string& text) {
    return text.substr(0, text.find('.'));
}

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
    : wantsDiacriticInsensitiveSearch_(preferences.diacriticInsensitiveSearch),
      showAppsFromAnywhere_(preferences.showAppsFoundAnywhere) {}

QueryContainer::QueryContainer(std::string_view text, const CommandRecogniser& parser,
                               std::optional<SearchLocation> location, bool soundexMatching,
                               QueryPreferences preferences)
    : QueryContainer(preferences) {
    baseString_ = std::string(text);
    std::replace(baseString_.begin(), baseString_.end(), '\n', ' ');
    baseStringLowercase_ = lowercased(baseString_);
    soundex_ = soundexMatching;
    whereLocation_ = std::move(location);
    if (refusedForItsSize()) return;

    parseCommands(parser);
    sortCommands();
    for (const auto& command : commandsFoundInQuery_) {
        const auto* scoped = dynamic_cast<const CommandWithScope*>(command.get());
        auto path = scoped ? scoped->scopePath() : std::nullopt;
        if (path && isExistingDirectory(*path)) {
            whereLocation_ = SearchLocation::fromURLs({Url(*path, true)}, lastPathComponent(*path));
            break;
        }
    }
    matchIsCaseSensitive_ = hasCommand(CommandRole::caseSensitive);
    matchWholeWords_ = hasCommand(CommandRole::wholeWords);
    matchExactName_ = hasCommand(CommandRole::exactName);
    classifyWords();
    addCommandsForSearchWords();
    collectSearchWords();
    buildBooleanExpr();
    addCommandStrings();
    matchExpr_ = matchExactName_ ? booleanExpr_.collapsedForExact() : booleanExpr_;
    querySearchArguments_ = computeQuerySearchArguments();
    for (const auto& word : searchWords_) searchWordStringsSoundexValues_.push_back(Soundex::value(word));
}

bool QueryContainer::refusedForItsSize() {
    if (baseString_.size() > QueryLimits::maximumTextBytes) {
        refusalReason_ = fmt::format("the query is {} bytes long; at most {} are read", baseString_.size(),
                                     QueryLimits::maximumTextBytes);
        return true;
    }
    allWords_ = SentenceComponent::parseWords(baseString_, nullptr, true);
    if (allWords_.size() <= QueryLimits::maximumWords) return false;
    refusalReason_ =
        fmt::format("the query has {} words; at most {} are read", allWords_.size(), QueryLimits::maximumWords);
    allWords_.clear();
    return true;
}

void QueryContainer::parseCommands(const CommandRecogniser& parser) {
    Words commandWords;
    std::copy_if(allWords_.begin(), allWords_.end(), std::back_inserter(commandWords),
                 [](const SentenceComponent& word) { return word.isAfterAColon; });
    CommandRecogniserResult parsed = parser.makeCommands(commandWords);
    commandsFoundInQuery_ = std::move(parsed.commands);
    allRecoginsedParts_ = std::move(parsed.consumedParts);
    for (const auto& command : commandsFoundInQuery_)
        appendUnique(allRecoginsedParts_, command->commandConsumedParts());
}

// Cheap name tests first, content reading last.
void QueryContainer::sortCommands() {
    auto rank = [](const CommandPtr& command) {
        if (command->commandRole() == CommandRole::extension) return 0;
        if (command->commandRole() == CommandRole::contentSearch) return 2;
        return 1;
    };
    std::stable_sort(commandsFoundInQuery_.begin(), commandsFoundInQuery_.end(),
                     [&](const CommandPtr& a, const CommandPtr& b) { return rank(a) < rank(b); });
}

void QueryContainer::classifyWords() {
    auto colon =
        std::find_if(allWords_.begin(), allWords_.end(), [](const SentenceComponent& w) { return w.isAfterAColon; });
    Words commandArea(colon, allWords_.end());

    auto shortcut = std::find_if(commandArea.begin(), commandArea.end(),
                                 [](const SentenceComponent& w) { return w.textLowered == "shortcut"; });
    if (shortcut != commandArea.end() && shortcut + 1 != commandArea.end()) {
        shortcutKeywordName_ = joinedTexts(Words(shortcut + 1, commandArea.end()));
    }
    for (const auto& word : allWords_) {
        if (word.isBooleanOperator()) booleanOperatorWords_.push_back(word);
        if (isStructuralParen(word)) structuralParenWords_.push_back(word);
    }

    Words consumed;
    for (const auto& command : commandsFoundInQuery_) appendUnique(consumed, command->commandConsumedParts());
    for (const auto& word : commandArea) {
        if (!isRecognised(word) && !word.isBooleanOperator()) unusedCommandAreaWords_.push_back(word);
        if (!containsPart(consumed, word) && !isStructuralParen(word) && !word.isBooleanOperator()) {
            invalidCommandAreaWords_.push_back(word);
        }
    }
    for (const auto& word : allWords_) {
        if (!isRecognised(word) && !isStructuralParen(word)) searchWordParts_.push_back(word);
    }
    for (const auto& word : searchWordParts_) {
        if (word.isAfterAColon) continue;
        wordsBeforeColon_.push_back(word);
        (isMinusWord(word) ? searchWordsWithMinus_ : searchWordsWithoutMinus_).push_back(word);
    }
}

void QueryContainer::addCommandsForSearchWords() {
    if (!searchWordsWithMinus_.empty()) {
        std::vector<std::string> rawWords;
        for (const auto& word : searchWordsWithMinus_) rawWords.push_back(word.textLowered);
        commandsFoundInQuery_.push_back(std::make_shared<NotIncludingWords>(std::move(rawWords)));
    }
    Words wildcardWords;
    std::copy_if(searchWordsWithoutMinus_.begin(), searchWordsWithoutMinus_.end(), std::back_inserter(wildcardWords),
                 [](const SentenceComponent& w) { return w.wildcard != SentenceComponent::Wildcard::none; });
    if (!wildcardWords.empty())
        commandsFoundInQuery_.push_back(std::make_shared<WildcardWords>(std::move(wildcardWords)));
}

void QueryContainer::collectSearchWords() {
    for (const auto& word : searchWordsWithoutMinus_) {
        if (isBareOr(word)) {
            includesORStatement_ = true;
            continue;
        }
        searchWords_.push_back(word.textLowered);
        searchWordsOriginalCase_.push_back(word.textOriginalCase);
    }
    if (includesORStatement_) {
        std::vector<std::string> group;
        for (const auto& word : wordsBeforeColon_) {
            if (!isBareOr(word)) {
                group.push_back(lowercased(word.textOriginalCase));
                continue;
            }
            if (!group.empty()) orStringGroups_.push_back(std::move(group));
            group.clear();
        }
        if (!group.empty()) orStringGroups_.push_back(std::move(group));
    }
    searchWordsHighlightStrings_ = matchIsCaseSensitive_ ? searchWordsOriginalCase_ : searchWords_;
}

void QueryContainer::buildBooleanExpr() {
    std::vector<std::pair<SentenceComponent, int>> partMap;
    for (size_t index = 0; index < commandsFoundInQuery_.size(); ++index) {
        const Command& command = *commandsFoundInQuery_[index];
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
    BooleanParser::Reading reading;
    booleanExpr_ =
        BooleanParser::parse(BooleanParser::tokenizeUnified(allWords_, recognised, commandForPart), &reading);
    refuseUnreadableExpression(reading);
}

void QueryContainer::refuseUnreadableExpression(const BooleanParser::Reading& reading) {
    const bool onlyOperators =
        !allWords_.empty() && std::all_of(allWords_.begin(), allWords_.end(), [](const auto& word) {
            return word.isBooleanOperator() || isStructuralParen(word);
        });
    if (reading.deepestNesting > QueryLimits::maximumNesting) {
        refusalReason_ = fmt::format("the query nests parentheses and NOTs {} deep; at most {} are read",
                                     reading.deepestNesting, QueryLimits::maximumNesting);
    } else if (onlyOperators) {
        refusalReason_ = "the query holds only operators and parentheses: put a word or a criterion in it";
    } else if (reading.unreadOperands > 0) {
        refusalReason_ = "a ')' closes no '(', so the rest of the query would be ignored: remove it or add its '('";
    }
}

void QueryContainer::addCommandStrings() {
    for (size_t index = 0; index < commandsFoundInQuery_.size(); ++index) {
        const Command& command = *commandsFoundInQuery_[index];
        bool underOr = isBooleanLeaf(command) && booleanExpr_.hasCommandLeafUnderOr({static_cast<int>(index)});
        if (!underOr) {
            auto extra = command.commandImpExtraSearchStrings();
            searchWords_.insert(searchWords_.end(), extra.begin(), extra.end());
        }
        auto highlights = command.commandExtraHighlightStrings();
        searchWordsHighlightStrings_.insert(searchWordsHighlightStrings_.end(), highlights.begin(), highlights.end());
    }
}

QuerySearchArguments QueryContainer::computeQuerySearchArguments() const {
    QuerySearchArguments arguments;
    if (!booleanExpr_.hasCommandUnderOr()) {
        for (const auto& command : commandsFoundInQuery_) command->commandImpQuerySearchArguments(arguments);
    }
    if (!arguments.word && !searchWords_.empty()) arguments.word = searchWords_.front();
    return arguments;
}

bool QueryContainer::isRecognised(const SentenceComponent& word) const {
    return containsPart(allRecoginsedParts_, word);
}

std::string QueryContainer::debugDescription() const {
    std::string text = baseString_ + ": ";
    for (size_t i = 0; i < commandsFoundInQuery_.size(); ++i) {
        if (i > 0) text += ", ";
        text += commandsFoundInQuery_[i]->debugDescription();
    }
    return text;
}

std::vector<std::shared_ptr<SearchDataSource>> QueryContainer::suppliedDataSources() const {
    std::vector<std::shared_ptr<SearchDataSource>> sources;
    for (const auto& command : commandsFoundInQuery_) {
        auto supplied = command->suppliedDataSources();
        sources.insert(sources.end(), supplied.begin(), supplied.end());
    }
    return sources;
}

std::vector<CommandPtr> QueryContainer::copyCommandsFoundInQuery() const {
    std::vector<CommandPtr> copies;
    for (const auto& command : commandsFoundInQuery_) copies.push_back(command->copy());
    return copies;
}

std::vector<CommandPtr> QueryContainer::commandsFoundInQueryForDisplay() const {
    std::vector<CommandPtr> shown;
    for (const auto& command : commandsFoundInQuery_) {
        const Command* made = command.get();
        if (!dynamic_cast<const NotIncludingWords*>(made) && !dynamic_cast<const WildcardWords*>(made)) {
            shown.push_back(command);
        }
    }
    std::stable_sort(shown.begin(), shown.end(), [](const CommandPtr& a, const CommandPtr& b) {
        return displayPriority(*a) < displayPriority(*b);
    });
    return shown;
}

std::string QueryContainer::searchWordsWithMinusString() const {
    std::string text;
    for (const auto& word : searchWordsWithMinus_) {
        if (!text.empty()) text += ' ';
        text += word.textOriginalCase.substr(1);
    }
    return text;
}

CommandPtr QueryContainer::findCommand(CommandRole role) const {
    for (const auto& command : commandsFoundInQuery_) {
        if (command->commandRole() == role) return command;
    }
    return nullptr;
}

std::set<int> QueryContainer::dataSourceLeafIndices() const {
    std::set<int> indices;
    for (int index : booleanExpr_.commandLeafIndices()) {
        if (index >= 0 && static_cast<size_t>(index) < commandsFoundInQuery_.size() &&
            !commandsFoundInQuery_[index]->suppliedDataSources().empty()) {
            indices.insert(index);
        }
    }
    return indices;
}

bool QueryContainer::booleanExprUsesDataSourceOr() const {
    auto indices = dataSourceLeafIndices();
    return !indices.empty() && booleanExpr_.hasCommandLeafUnderOr(indices);
}

BooleanExpr::EvalContext QueryContainer::makeEvalContext(bool diacriticInsensitive,
                                                         std::function<bool(int)> evaluateCommand) const {
    BooleanExpr::EvalContext context;
    context.caseSensitive = matchIsCaseSensitive_;
    context.wholeWords = matchWholeWords_;
    context.exactName = matchExactName_;
    context.diacriticInsensitive = diacriticInsensitive;
    context.wordSplitter = &QueryContainer::wholeWordsFromFileName;
    context.evaluateCommand = std::move(evaluateCommand);
    return context;
}

std::vector<UnavailableCriterion> QueryContainer::unavailableCriteria() const {
    std::vector<UnavailableCriterion> unavailable;
    for (const auto& command : commandsFoundInQuery_) {
        if (auto engine = command->missingEngine()) unavailable.push_back({command->commandToString(), *engine});
    }
    if (shortcutKeywordName_) unavailable.push_back({"shortcut " + *shortcutKeywordName_, "shortcuts"});
    return unavailable;
}

bool QueryContainer::isWordBasedSearch() const {
    auto any = [&](auto predicate) {
        return std::any_of(commandsFoundInQuery_.begin(), commandsFoundInQuery_.end(), predicate);
    };
    if (any([](const CommandPtr& c) { return c->commandStopsWordBasedSearches(); })) return false;
    if (any([](const CommandPtr& c) { return !c->commandIsOnlyAFilter(); })) return true;
    return !searchWords_.empty();
}

bool QueryContainer::isORCommandSearch() const {
    if (!includesORStatement_ || searchWordParts_.empty()) return false;
    const SentenceComponent& last = searchWordParts_.back();
    return last.textLowered == "or" && !last.wasInQuotes && !last.isAfterAColon;
}

bool QueryContainer::fsItemNameStringIncludesWordsFromQuery(std::string_view name, bool diacriticInsensitive) const {
    if (!soundex_) {
        return matchExpr_.matches(name, makeEvalContext(diacriticInsensitive || wantsDiacriticInsensitiveSearch_, {}));
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
    return std::any_of(
        searchWordStringsSoundexValues_.begin(), searchWordStringsSoundexValues_.end(),
        [&](const std::string& value) { return std::find(values.begin(), values.end(), value) != values.end(); });
}

bool QueryContainer::pathIsInQueryLocation(const std::string& path) const {
    if (showAppsFromAnywhere_ && pathExtension(path) == "app" &&
        upToFirstPoint(lowercased(lastPathComponent(path))) == upToFirstPoint(baseStringLowercase_)) {
        return true;
    }
    if (!whereLocation_) return true;
    if (!querySearchArguments_.checkPathForResults) return true;
    return whereLocation_->pathIsInLocation(path);
}

bool QueryContainer::isPossibleMatch(std::string_view path, bool diacriticInsensitive) const {
    // The whole path lets a word that only a folder's name holds through, to be
    // judged by the item's name later. That widening is wrong for a negated
    // word: "budget -old" would drop everything under a folder named "old",
    // so then only the name is tested, as the final judgement will.
    std::string lastName;
    std::string_view tested = path;
    if (booleanExpr_.hasNegation()) tested = lastName = lastPathComponent(path);
    if (commandsFoundInQuery_.empty()) {
        return !searchWords_.empty() && fsItemNameStringIncludesWordsFromQuery(tested, diacriticInsensitive);
    }
    if (isORCommandSearch() || booleanExpr_.hasCommandUnderOr()) return true;
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
