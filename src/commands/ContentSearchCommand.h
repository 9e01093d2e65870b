#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "commands/ContainerEntries.h"
#include "commands/ContentSearchType.h"
#include "commands/FoldedText.h"
#include "language/ContentSearchFlag.h"
#include "query/CommandBase.h"
#include "query/FoundItem.h"

namespace quester {

class ContentSearcher;
struct ImportTextResult;

// Looks for words inside files: `content "yearly total"`, with the options
// `without "draft"`, whole words, all words, all files, use OCR, case sensitive.
// Documents are read through the import helper (small plain text in the
// program), which starts at the first document that needs it: a search of
// plain text alone would pay for its start on a busy processor. Archives and
// databases are read through their content searchers. A file that matches
// gets its found lines ("Line 3:  …the yearly total was…") and, as its rank,
// the number of hits. Matching always ignores diacritics.
class ContentSearchCommand final : public CommandBase<ContentSearchCommand> {
public:
    // What the reading steps need to know, taken from the command and the query.
    struct FileSearchOptions {
        std::vector<std::string> wordsOfInterest;
        std::vector<std::string> wordsToExclude;
        bool wholeWords = false;
        bool allWords = false;
        bool useOCR = false;
        bool caseSensitive = false;
        bool searchAllFileTypes = false;
        // Without, a match is only counted: its lines and their places are not made.
        bool collectsFoundLines = true;
        SearchDataSourceDelegate* feedbackHandler = nullptr;
    };
    // Each searched word with its hits, in the order of the words.
    using WordHits = std::vector<std::pair<std::string, std::vector<TextRange>>>;
    // A matching file's found lines and its number of hits.
    struct TextMatch {
        std::vector<FoundItem> foundLines;
        std::int64_t hitCount = 0;
    };

    // "textContent". args[0] is the words; with the flag without=1, args[1] the
    // words to exclude; then, optionally, the list of "~contentSearchFlags".
    static CommandPtr create(std::string_view commandName, const VariableArguments& args, const TemplateFlags& flags);

    ContentSearchCommand();
    ContentSearchCommand(std::string wordsToSearchFor, std::string wordsToExclude,
                         const std::vector<ContentSearchFlag>& flags);
    // A copy reads the type settings anew.
    ContentSearchCommand(const ContentSearchCommand& other);

    std::string commandToString() const override { return commandToText(false); }
    std::string commandExample() const override { return commandToText(true); }
    CommandApplyResult commandImpApply(SearchResult& to, SearchDataSourceDelegate* feedback,
                                       const QueryContainer& forQuery) override;
    bool commandSupportsBooleanCombination() const override { return true; }
    // Reads the file itself, whatever its status said.
    bool readsItemAttributes() const override { return false; }
    std::optional<AvailableHelpFileNames> helpFileName() const override { return AvailableHelpFileNames::TextContent; }
    CommandRole commandRole() const override { return CommandRole::contentSearch; }
    bool sameParameters(const ContentSearchCommand& other) const {
        return wordsToSearchForString.empty() == other.wordsToSearchForString.empty();
    }

    // A word list cut at commas, each piece trimmed and stripped of a leading
    // and a trailing double quote: `a, b` and `"a, b"` are both a and b.
    static std::vector<std::string> searchWordParts(std::string_view words);
    // The words looked for: lowercased unless the command or the query is
    // case-sensitive.
    std::vector<std::string> searchWords(const QueryContainer& query) const;
    // The hits of the options' words in `text`; none when the text doesn't
    // match: no hit at all, a word missing with `allWords`, or an excluded
    // word whose first occurrence counts (with `wholeWords`, when it stands
    // alone).
    static std::optional<WordHits> textIncludes(const FoldedText& text, const FileSearchOptions& options);
    // The hits of the options' words in an ASCII text, where folding is only
    // lowering, counted as `textIncludes` counts them; 0 when the text
    // doesn't match. Most files a search reads are such misses, and then the
    // folded search needn't run. None when the text or a word isn't ASCII, or
    // when whole words are asked and the words are there.
    static std::optional<std::int64_t> asciiHitCount(std::string_view text, const FileSearchOptions& options);
    // The found lines of `hits` in `text`, located through `located` (pages
    // and lines) behind `entryLabel` (an archive member's path) when given,
    // and the number of hits.
    static TextMatch textMatch(const std::u32string& text, const WordHits& hits, const ImportTextResult& located,
                               bool useOCR, std::string_view entryLabel = {});

    // Archive members above this size are passed over unread.
    static constexpr std::uint64_t maxContainerEntrySize = 52'428'800;
    // The most members read from one archive.
    static constexpr int maxContainerEntriesSearched = 500;

    std::string wordsToSearchForString;
    std::string wordsToExcludeString;
    bool allWords = false;
    bool caseSensitive = false;
    bool wholeWord = false;
    bool searchBinaryFiles = false;  // "all files"
    bool useOCR = false;
    bool wasExistingCommand = false;
    bool removeCommand = false;
    // The kinds of file passed over unread, from the settings when made.
    std::set<ContentSearchType> disabledContentTypes;

private:
    std::string commandToText(bool example) const;
    FileSearchOptions fileSearchOptions(const QueryContainer& query, SearchDataSourceDelegate* feedback,
                                        bool searchAllFileTypes) const;
    bool isCaseSensitive(const QueryContainer& query) const;
    CommandApplyResult applyDocumentSearch(SearchResult& to, SearchDataSourceDelegate* feedback,
                                           const QueryContainer& query) const;
    CommandApplyResult applyContentSearcher(SearchResult& to, const ContentSearcher& searcher,
                                            SearchDataSourceDelegate* feedback, const QueryContainer& query) const;
    CommandApplyResult applyContainerSearch(SearchResult& to, const ContentSearcher& searcher, ContentSearchType type,
                                            SearchDataSourceDelegate* feedback, const QueryContainer& query) const;
    std::vector<FoundItem> containerCatalogMatches(const std::string& path, const ContentSearcher& searcher,
                                                   SearchDataSourceDelegate* feedback,
                                                   const QueryContainer& query) const;
    std::vector<FoundItem> searchContainerContents(const std::string& path, ContainerEntries::Kind kind,
                                                   SearchDataSourceDelegate* feedback,
                                                   const QueryContainer& query) const;
    bool isContainerEntryWanted(const ContainerEntries::FlatEntry& entry, const FileSearchOptions& options) const;
    std::optional<FoundItem> searchOneContainerEntry(const std::string& containerPath, ContainerEntries::Kind kind,
                                                     const ContainerEntries::FlatEntry& entry,
                                                     const FileSearchOptions& options,
                                                     SearchDataSourceDelegate* feedback) const;
    std::optional<FoundItem> extractedEntryMatch(const std::string& containerPath, ContainerEntries::Kind kind,
                                                 const ContainerEntries::FlatEntry& entry,
                                                 const FileSearchOptions& options) const;
    std::optional<TextMatch> searchTextContent(const std::string& path, const FileSearchOptions& options,
                                               std::string_view entryLabel = {}) const;
    // The file's text; what the import helper read is kept in `imported`,
    // its pages joined in `joinedPages` when there are several.
    std::optional<std::string_view> readText(const std::string& path, const FileSearchOptions& options,
                                             std::optional<ImportTextResult>& imported, std::string& joinedPages) const;
    std::optional<ImportTextResult> importedText(const std::string& path, const FileSearchOptions& options) const;
};

}  // namespace quester
