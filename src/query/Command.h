#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "language/SentenceComponent.h"
#include "query/AvailableHelpFileNames.h"
#include "query/CommandApplyResult.h"
#include "support/Uuid.h"

namespace quester {

class QueryContainer;
class SearchDataSource;
class SearchDataSourceDelegate;
struct QuerySearchArguments;
struct SearchResult;

// What the query itself must know of a command beyond its slots: the switches
// of name matching, and the criteria that it orders or treats apart. Every
// other command is a plain criterion.
enum class CommandRole {
    criterion,
    caseSensitive,
    wholeWords,
    exactName,
    extension,
    contentSearch,
    showInvisibleItems,
};

// One criterion of a query. A command belongs to one queue at a time: the search
// manager gives each of its queues its own copies (`copy`), so nothing here is
// synchronised. Commands are shared between copies of a query container, hence
// `std::shared_ptr`.
class Command {
public:
    virtual ~Command() = default;
    Command& operator=(const Command&) = delete;

    // 1. Diagnostic text for logs and the query container's description.
    virtual std::string debugDescription() const { return commandToString(); }

    // 2. The identity of this object, new for every object and every copy.
    virtual const Uuid& id() const { return commandId; }

    // 3. The words of the sentence that this command took; written by the parser
    // once after creation.
    virtual const std::vector<SentenceComponent>& commandConsumedParts() const { return consumedParts; }
    virtual void setCommandConsumedParts(std::vector<SentenceComponent> parts) { consumedParts = std::move(parts); }

    // 4. The canonical wording; typed after a colon it parses back to an equal command.
    virtual std::string commandToString() const = 0;

    // 5. The wording with "**" around the part to fill in ("inside **folder**").
    virtual std::string commandExample() const = 0;

    // 6. Judges one result, which it may add to (found lines). Runs on a search
    // manager queue; long work reads `feedback->shouldStop`. `feedback` may be null.
    virtual CommandApplyResult commandImpApply(SearchResult& to, SearchDataSourceDelegate* feedback,
                                               const QueryContainer& forQuery) = 0;

    // 7. Once per search, before any source starts, on the query's own objects.
    virtual void commandsStarting() {}

    // 8. Words added to the query's search words (not for a command under an OR).
    virtual std::vector<std::string> commandImpExtraSearchStrings() const { return {}; }

    // 9. Words added to what results highlight.
    virtual std::vector<std::string> commandExtraHighlightStrings() const { return {}; }

    // 10. Narrows the arguments of index-based sources (only with no OR over commands).
    virtual void commandImpQuerySearchArguments(QuerySearchArguments& to) const { (void)to; }

    // 11. This command is the whole search: word-driven sources must not run.
    virtual bool commandStopsWordBasedSearches() const { return false; }

    // 12. Alone, this command makes no search worth running.
    virtual bool commandIsOnlyAFilter() const { return false; }

    // Whether judging an item reads its size or dates from the result, as the
    // size and date criteria do; a source then reads them for every item.
    virtual bool readsItemAttributes() const { return true; }

    // 13. May be a leaf of the query's boolean expression.
    virtual bool commandSupportsBooleanCombination() const { return false; }

    // 14. The search engines this command brings: the same objects on every read.
    virtual std::vector<std::shared_ptr<SearchDataSource>> suppliedDataSources() const { return {}; }

    // 15. Same class and equal in the parameters that define it.
    virtual bool isReplaceableWith(const Command& otherCmd) const = 0;

    // 16. A deep copy with a new id and no consumed parts, sharing no mutable state.
    virtual std::shared_ptr<Command> copy() const = 0;

    // 17. The model of the editor row: by default the plain text of the command.
    virtual std::string commandRowEditorView() const { return commandToString(); }

    // 18. The help page that explains this command, if any.
    virtual std::optional<AvailableHelpFileNames> helpFileName() const { return std::nullopt; }

    // What the query must know of this command (see CommandRole).
    virtual CommandRole commandRole() const { return CommandRole::criterion; }

    // The engine this criterion needs while the program has none for it
    // ("content search"): a search that holds it is refused before it starts,
    // rather than run as if the criterion weren't there. None when it can run.
    virtual std::optional<std::string> missingEngine() const { return std::nullopt; }

protected:
    Command() = default;
    // What every `copy` builds on: a copied command is a new object with its own
    // identity and has taken no words of any sentence.
    Command(const Command&) : commandId(Uuid::random()) {}

private:
    Uuid commandId = Uuid::random();
    std::vector<SentenceComponent> consumedParts;
};

using CommandPtr = std::shared_ptr<Command>;

}  // namespace quester
