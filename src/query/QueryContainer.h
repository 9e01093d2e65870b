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

class LanguageParse;

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
    QueryContainer(std::string_view text, const LanguageParse& parser,
                   std::optional<SearchLocation> whereLocation = std::nullopt, bool soundex = false,
                   QueryPreferences preferences = {});

    std::optional<SearchLocation> whereLocation;
    bool soundex = false;
    std::vector<SentenceComponent> allWords;
    std::vector<SentenceComponent> searchWordParts;
    bool includesORStatement = false;
    std::vector<SentenceComponent> wordsBeforeColon;
    std::vector<std::string> searchWords;
    std::vector<std::string> searchWordsOriginalCase;
    std::vector<std::vector<std::string>> orStringGroups;
    std::vector<std::string> searchWordsHighlightStrings;
    std::vector<SentenceComponent> invalidCommandAreaWords;
    std::vector<SentenceComponent> booleanOperatorWords;
    std::vector<SentenceComponent> structuralParenWords;
    std::optional<std::string> shortcutKeywordName;
    QuerySearchArguments querySearchArguments;
    std::vector<SentenceComponent> searchWordsWithMinus;
    std::vector<SentenceComponent> searchWordsWithoutMinus;
    std::vector<CommandPtr> commandsFoundInQuery;
    BooleanExpr booleanExpr;
    BooleanExpr matchExpr;
    bool matchIsCaseSensitive = false;
    bool matchWholeWords = false;
    bool matchExactName = false;
    bool wantsDiacriticInsensitiveSearch = false;
    bool showAppsFromAnywhere = false;
    std::string baseString;
    std::string baseStringLowercase;
    std::vector<std::string> searchWordStringsSoundexValues;
    std::vector<SentenceComponent> allRecoginsedParts;
    std::vector<SentenceComponent> unusedCommandAreaWords;
    // Why the query must not be searched, in words for the person who typed it:
    // too long or too deeply nested to be read at all (QueryLimits; nothing of
    // it is then parsed), only operators and parentheses, or a ")" that closes
    // nothing and would leave the rest of the sentence unread. None when usable.
    std::optional<std::string> refusalReason;

    // `baseString`, ": ", then each command's description.
    std::string debugDescription() const;
    std::vector<std::shared_ptr<SearchDataSource>> suppliedDataSources() const;
    std::vector<CommandPtr> copyCommandsFoundInQuery() const;
    // Without the commands the container made itself, case sensitivity first and
    // content search last.
    std::vector<CommandPtr> commandsFoundInQueryForDisplay() const;
    std::string searchWordsWithMinusString() const;
    // The first command of a class, by its class name ("SizeCommand").
    CommandPtr findCommand(std::string_view className) const;
    std::set<int> dataSourceLeafIndices() const;
    bool booleanExprUsesDataSourceOr() const;
    BooleanExpr::EvalContext makeEvalContext(bool diacriticInsensitive, std::function<bool(int)> evaluateCommand) const;

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
    void parseCommands(const LanguageParse& parser);
    void sortCommands();
    void classifyWords();
    void addCommandsForSearchWords();
    void collectSearchWords();
    bool refusedForItsSize();
    void buildBooleanExpr();
    void refuseUnreadableExpression(const BooleanParser::Reading& reading);
    void addCommandStrings();
    QuerySearchArguments computeQuerySearchArguments() const;
    bool hasCommand(std::string_view className) const { return findCommand(className) != nullptr; }
    bool isRecognised(const SentenceComponent& word) const;
};

}  // namespace quester
