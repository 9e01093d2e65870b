#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "language/BooleanExpr.h"
#include "language/BooleanParser.h"
#include "language/SentenceComponent.h"
#include "query/Command.h"
#include "query/QuerySearchArguments.h"
#include "query/SearchLocation.h"

namespace quester {

class CommandRecogniser;

// A criterion of a query that the program can't run yet, and what it lacks.
struct UnavailableCriterion {
    std::string wording;  // as typed after the colon, or the command's canonical text
    std::string engine;   // "content search", "shortcuts", ...
};

// The two user defaults a query reads when it is made. The caller reads them
// from the preferences; both are off by default.
struct QueryPreferences {
    bool diacriticInsensitiveSearch = false;
    bool showAppsFoundAnywhere = false;
};

// The parsed form of one typed query: the commands, the classified words, the
// boolean expression and the arguments for index-based sources. Built once from
// the text, then read from any thread. Copies share the command objects; a
// search gives each of its queues copies of its own (`copyCommandsFoundInQuery`).
class QueryContainer {
public:
    // An empty query: no words, no commands, the empty expression.
    explicit QueryContainer(QueryPreferences preferences = {});
    // Parses `text` with `parser`: words before the first unquoted colon are
    // search words, the sentence after it becomes commands. Never fails; words
    // that mean nothing end up in `invalidCommandAreaWords`.
    QueryContainer(std::string_view text, const CommandRecogniser& parser,
                   std::optional<SearchLocation> whereLocation = std::nullopt, bool soundex = false,
                   QueryPreferences preferences = {});

    // The location searched: the one given, or the folder of the first `inside` criterion that exists.
    const std::optional<SearchLocation>& whereLocation() const { return whereLocation_; }
    // Words match names by their soundex values.
    bool soundex() const { return soundex_; }
    // Every word of the text, parentheses split off, in order.
    const std::vector<SentenceComponent>& allWords() const { return allWords_; }
    // The words no command took, without structural parentheses.
    const std::vector<SentenceComponent>& searchWordParts() const { return searchWordParts_; }
    // The search words hold a bare "or".
    bool includesORStatement() const { return includesORStatement_; }
    // `searchWordParts` before the colon.
    const std::vector<SentenceComponent>& wordsBeforeColon() const { return wordsBeforeColon_; }
    // The lower-case search words, then the words commands add (not under an OR).
    const std::vector<std::string>& searchWords() const { return searchWords_; }
    // The search words as typed, without the added ones.
    const std::vector<std::string>& searchWordsOriginalCase() const { return searchWordsOriginalCase_; }
    // For "a b or c": [["a","b"],["c"]], lower-case; empty without an OR.
    const std::vector<std::vector<std::string>>& orStringGroups() const { return orStringGroups_; }
    // What results highlight: the search words (as typed when case sensitive) and what commands add.
    const std::vector<std::string>& searchWordsHighlightStrings() const { return searchWordsHighlightStrings_; }
    // Words after the colon that no command consumed and that are no operator or parenthesis.
    const std::vector<SentenceComponent>& invalidCommandAreaWords() const { return invalidCommandAreaWords_; }
    // "and", "or" and "NOT" outside quotes.
    const std::vector<SentenceComponent>& booleanOperatorWords() const { return booleanOperatorWords_; }
    // "(" and ")" outside quotes.
    const std::vector<SentenceComponent>& structuralParenWords() const { return structuralParenWords_; }
    // The words after "shortcut" in the command area, if any.
    const std::optional<std::string>& shortcutKeywordName() const { return shortcutKeywordName_; }
    // What index-based sources may narrow by (dates, sizes, a word).
    const QuerySearchArguments& querySearchArguments() const { return querySearchArguments_; }
    // The excluded words ("-dogs"), as typed.
    const std::vector<SentenceComponent>& searchWordsWithMinus() const { return searchWordsWithMinus_; }
    // The other words before the colon.
    const std::vector<SentenceComponent>& searchWordsWithoutMinus() const { return searchWordsWithoutMinus_; }
    // The commands: extension tests first, content search last; shared by copies of the query.
    const std::vector<CommandPtr>& commandsFoundInQuery() const { return commandsFoundInQuery_; }
    // The whole sentence as an expression; command leaves are indices into `commandsFoundInQuery`.
    const BooleanExpr& booleanExpr() const { return booleanExpr_; }
    // `booleanExpr`, collapsed for an exact-name query: what name tests use.
    const BooleanExpr& matchExpr() const { return matchExpr_; }
    // The query has a case-sensitive criterion.
    bool matchIsCaseSensitive() const { return matchIsCaseSensitive_; }
    // The query has a whole-words criterion.
    bool matchWholeWords() const { return matchWholeWords_; }
    // The query has an exact-name criterion.
    bool matchExactName() const { return matchExactName_; }
    // The user default "diacriticInsensitiveSearch" when the query was made.
    bool wantsDiacriticInsensitiveSearch() const { return wantsDiacriticInsensitiveSearch_; }
    // The user default "showAppsFoundAnywhere" when the query was made.
    bool showAppsFromAnywhere() const { return showAppsFromAnywhere_; }
    // The typed text, newlines turned into blanks.
    const std::string& baseString() const { return baseString_; }
    // `baseString` in lower case.
    const std::string& baseStringLowercase() const { return baseStringLowercase_; }
    // The soundex value of each of `searchWords`.
    const std::vector<std::string>& searchWordStringsSoundexValues() const { return searchWordStringsSoundexValues_; }
    // The words that the parser or a command took.
    const std::vector<SentenceComponent>& allRecoginsedParts() const { return allRecoginsedParts_; }
    // Words after the colon not recognised and no operator (outside quotes).
    const std::vector<SentenceComponent>& unusedCommandAreaWords() const { return unusedCommandAreaWords_; }
    // Why the query must not be searched, in words for the person who typed it:
    // too long or too deeply nested to be read at all (QueryLimits; nothing of
    // it is then parsed), only operators and parentheses, or a ")" that closes
    // nothing and would leave the rest of the sentence unread. None when usable.
    const std::optional<std::string>& refusalReason() const { return refusalReason_; }

    // `baseString`, ": ", then each command's description.
    std::string debugDescription() const;
    std::vector<std::shared_ptr<SearchDataSource>> suppliedDataSources() const;
    std::vector<CommandPtr> copyCommandsFoundInQuery() const;
    // Without the commands the container made itself, case sensitivity first and
    // content search last.
    std::vector<CommandPtr> commandsFoundInQueryForDisplay() const;
    std::string searchWordsWithMinusString() const;
    // The first command of class `T` (or of a class derived from it).
    template <typename T>
    std::shared_ptr<T> findCommand() const {
        for (const auto& command : commandsFoundInQuery_) {
            if (auto typed = std::dynamic_pointer_cast<T>(command)) return typed;
        }
        return nullptr;
    }
    // The first command with the role.
    CommandPtr findCommand(CommandRole role) const;
    std::set<int> dataSourceLeafIndices() const;
    bool booleanExprUsesDataSourceOr() const;
    BooleanExpr::EvalContext makeEvalContext(bool diacriticInsensitive, std::function<bool(int)> evaluateCommand) const;

    // The criteria that have no engine in this program, in command order; a
    // shortcut ("word : shortcut music quiz") counts as one.
    std::vector<UnavailableCriterion> unavailableCriteria() const;

    bool isWordBasedSearch() const;
    // "words or : commands": an item passes when its name matches or the commands pass.
    bool isORCommandSearch() const;
    // The name test of the search words (or their soundex values).
    bool fsItemNameStringIncludesWordsFromQuery(std::string_view name, bool diacriticInsensitive) const;
    bool pathIsInQueryLocation(const std::string& path) const;
    // Whether a walked item is worth judging: the name test, unless commands
    // under an OR could accept what the name doesn't.
    bool isPossibleMatch(std::string_view path, bool diacriticInsensitive) const;

    // Splits a name at white space, punctuation and symbols, dropping empty pieces.
    static std::vector<std::string> wholeWordsFromFileName(std::string_view name);

private:
    void parseCommands(const CommandRecogniser& parser);
    void sortCommands();
    void classifyWords();
    void addCommandsForSearchWords();
    void collectSearchWords();
    bool refusedForItsSize();
    void buildBooleanExpr();
    void refuseUnreadableExpression(const BooleanParser::Reading& reading);
    void addCommandStrings();
    QuerySearchArguments computeQuerySearchArguments() const;
    bool hasCommand(CommandRole role) const { return findCommand(role) != nullptr; }
    bool isRecognised(const SentenceComponent& word) const;

    std::optional<SearchLocation> whereLocation_;
    bool soundex_ = false;
    std::vector<SentenceComponent> allWords_;
    std::vector<SentenceComponent> searchWordParts_;
    bool includesORStatement_ = false;
    std::vector<SentenceComponent> wordsBeforeColon_;
    std::vector<std::string> searchWords_;
    std::vector<std::string> searchWordsOriginalCase_;
    std::vector<std::vector<std::string>> orStringGroups_;
    std::vector<std::string> searchWordsHighlightStrings_;
    std::vector<SentenceComponent> invalidCommandAreaWords_;
    std::vector<SentenceComponent> booleanOperatorWords_;
    std::vector<SentenceComponent> structuralParenWords_;
    std::optional<std::string> shortcutKeywordName_;
    QuerySearchArguments querySearchArguments_;
    std::vector<SentenceComponent> searchWordsWithMinus_;
    std::vector<SentenceComponent> searchWordsWithoutMinus_;
    std::vector<CommandPtr> commandsFoundInQuery_;
    BooleanExpr booleanExpr_;
    BooleanExpr matchExpr_;
    bool matchIsCaseSensitive_ = false;
    bool matchWholeWords_ = false;
    bool matchExactName_ = false;
    bool wantsDiacriticInsensitiveSearch_ = false;
    bool showAppsFromAnywhere_ = false;
    std::string baseString_;
    std::string baseStringLowercase_;
    std::vector<std::string> searchWordStringsSoundexValues_;
    std::vector<SentenceComponent> allRecoginsedParts_;
    std::vector<SentenceComponent> unusedCommandAreaWords_;
    std::optional<std::string> refusalReason_;
};

}  // namespace quester
