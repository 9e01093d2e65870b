#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "language/BooleanExpr.h"
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
        for (const auto& command : commandsFoundInQuery) {
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
    void buildBooleanExpr();
    void addCommandStrings();
    QuerySearchArguments computeQuerySearchArguments() const;
    bool hasCommand(CommandRole role) const { return findCommand(role) != nullptr; }
    bool isRecognised(const SentenceComponent& word) const;
};

}  // namespace quester
