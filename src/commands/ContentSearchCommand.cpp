#include "commands/ContentSearchCommand.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>
#include <string>

#include "commands/ArchiveTempDirectory.h"
#include "commands/ContentSearchCancellation.h"
#include "commands/ContentSearchTypeSettings.h"
#include "commands/ContentSummary.h"
#include "content/ContentSearchers.h"
#include "import/ImportTextLocator.h"
#include "import/ImportTextResult.h"
#include "import/ImportTextXPC.h"
#include "language/UnicodeText.h"
#include "query/QueryContainer.h"
#include "query/SearchDataSourceDelegate.h"
#include "query/SearchResult.h"
#include "support/LogFunc.h"
#include "support/PathText.h"
#include "support/Utf8Text.h"

namespace quester {

namespace {

// The template's flags that are switched on, as flag values.
std::vector<ContentSearchFlag> templateFlags(const TemplateFlags& flags) {
    std::vector<ContentSearchFlag> found;
    for (const auto& [key, value] : flags) {
        auto flag = contentSearchFlagFromName(key);
        if (flag && value == "1") found.push_back(*flag);
    }
    return found;
}

bool holds(const std::vector<ContentSearchFlag>& flags, ContentSearchFlag flag) {
    return std::find(flags.begin(), flags.end(), flag) != flags.end();
}

// A list typed with its own quotes keeps them, escaped, inside the outer ones.
std::string escapeQuotes(const std::string& words) {
    if (words.size() >= 2 && words.front() == '"' && words.back() == '"') {
        return "\\\"" + words.substr(1, words.size() - 2) + "\\\"";
    }
    return words;
}

std::string_view trimmedText(std::string_view text) {
    const auto first = text.find_first_not_of(" \t\n\r\f\v");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t\n\r\f\v") - first + 1);
}

std::string_view dequoted(std::string_view text) {
    if (!text.empty() && text.front() == '"') text.remove_prefix(1);
    if (!text.empty() && text.back() == '"') text.remove_suffix(1);
    return text;
}

// Copies `text` to `out` with ASCII letters lowered, and answers whether
// every byte was ASCII. Written without branches so that it runs as vector code.
bool asciiLowercaseCopy(std::string_view text, char* out) {
    unsigned char seen = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        seen |= c;
        const bool upper = static_cast<unsigned char>(c - 'A') < 26;
        out[i] = static_cast<char>(c + (upper ? 0x20 : 0));
    }
    return seen < 0x80;
}

void reportFile(SearchDataSourceDelegate* feedback, const std::string& path, bool inProgress, float percentage) {
    if (feedback) feedback->searchingInsideFile(lastPathComponent(path), inProgress, percentage);
}

std::int64_t hitCount(const ContentSearchCommand::WordHits& hits) {
    std::size_t count = 0;
    for (const auto& word : hits) count += word.second.size();
    return static_cast<std::int64_t>(count);
}

// The text with ASCII letters lowered (unless case counts), in a buffer kept
// from file to file: most files are turned away on it, and a buffer of their
// size each time would cost more than the search. None when the text isn't
// ASCII.
std::optional<std::string_view> loweredASCII(std::string_view text, bool caseSensitive) {
    if (caseSensitive) return isASCII(text) ? std::optional(text) : std::nullopt;
    thread_local std::string lowered;
    lowered.resize(text.size());
    if (!asciiLowercaseCopy(text, lowered.data())) return std::nullopt;
    return std::string_view(lowered);
}

// Where in `word` stands the byte that lowercase text and source code hold
// least often. Looking for that byte first stops less often than looking for
// the first one: "checksum" is looked for by its "k", not by its "c".
std::size_t rarestBytePosition(std::string_view word) {
    // From the most common to the least; a byte not listed is rarer still.
    static constexpr std::string_view byFrequency =
        " etaoinsrlhdcu\nmpfgy_bw.,()=;vk\"'-x0:12/{}\t>*<jq3z45#[]6789&!+|@%$\\?^~`";
    std::size_t rarest = 0;
    std::size_t rarestRank = 0;
    for (std::size_t i = 0; i < word.size(); ++i) {
        const std::size_t at = byFrequency.find(word[i]);
        const std::size_t rank = at == std::string_view::npos ? byFrequency.size() : at;
        if (i == 0 || rank > rarestRank) {
            rarest = i;
            rarestRank = rank;
        }
    }
    return rarest;
}

// Occurrences that don't overlap, as the folded search counts them: the
// leftmost from each point on. Every start whose rare byte turns up is
// tried in order, so the first that holds the word is the leftmost.
std::int64_t occurrences(std::string_view text, std::string_view word) {
    const std::size_t rare = rarestBytePosition(word);
    std::int64_t count = 0;
    for (std::size_t from = 0; from + word.size() <= text.size();) {
        const std::size_t candidates = text.size() - word.size() + 1 - from;
        const void* hit = std::memchr(text.data() + from + rare, word[rare], candidates);
        if (hit == nullptr) break;
        const auto start = static_cast<std::size_t>(static_cast<const char*>(hit) - text.data()) - rare;
        const bool holds = std::memcmp(text.data() + start, word.data(), word.size()) == 0;
        if (holds) ++count;
        from = start + (holds ? word.size() : 1);
    }
    return count;
}

// What a command that matched leaves on its result.
CommandApplyResult accepted(SearchResult& to, std::vector<FoundItem> found, std::int64_t rank) {
    to.tryCollectSummaryLines = true;
    to.foundItems = std::move(found);
    to.contentSearchResultsRank = rank;
    return CommandApplyResult::accept;
}

}  // namespace

CommandPtr ContentSearchCommand::create(std::string_view commandName, const VariableArguments& args,
                                        const TemplateFlags& flags) {
    if (commandName != "textContent") return nullptr;
    const auto* words = argumentAt<SentenceComponent>(args, 0);
    if (!words) return nullptr;
    auto options = templateFlags(flags);
    std::string excluded;
    size_t flagListIndex = 1;
    if (holds(options, ContentSearchFlag::without)) {
        const auto* without = argumentAt<SentenceComponent>(args, 1);
        if (!without) return nullptr;
        excluded = without->textOriginalCase;
        flagListIndex = 2;
    }
    if (const auto* listed = argumentAt<std::vector<ContentSearchFlag>>(args, flagListIndex)) {
        options.insert(options.end(), listed->begin(), listed->end());
    }
    return std::make_shared<ContentSearchCommand>(words->textOriginalCase, excluded, options);
}

ContentSearchCommand::ContentSearchCommand()
    : disabledContentTypes(ContentSearchTypeSettings::shared().disabledTypes()) {}

ContentSearchCommand::ContentSearchCommand(const ContentSearchCommand& other)
    : CommandBase(other),
      wordsToSearchForString(other.wordsToSearchForString),
      wordsToExcludeString(other.wordsToExcludeString),
      allWords(other.allWords),
      caseSensitive(other.caseSensitive),
      wholeWord(other.wholeWord),
      searchBinaryFiles(other.searchBinaryFiles),
      useOCR(other.useOCR),
      wasExistingCommand(other.wasExistingCommand),
      removeCommand(other.removeCommand),
      disabledContentTypes(ContentSearchTypeSettings::shared().disabledTypes()) {}

ContentSearchCommand::ContentSearchCommand(std::string wordsToSearchFor, std::string wordsToExclude,
                                           const std::vector<ContentSearchFlag>& flags)
    : wordsToSearchForString(std::move(wordsToSearchFor)),
      wordsToExcludeString(std::move(wordsToExclude)),
      allWords(holds(flags, ContentSearchFlag::allWords)),
      caseSensitive(holds(flags, ContentSearchFlag::caseSensitive)),
      wholeWord(holds(flags, ContentSearchFlag::wholeWords)),
      searchBinaryFiles(holds(flags, ContentSearchFlag::allFiles)),
      useOCR(holds(flags, ContentSearchFlag::useOCR)),
      disabledContentTypes(ContentSearchTypeSettings::shared().disabledTypes()) {}

std::string ContentSearchCommand::commandToText(bool example) const {
    std::string words = escapeQuotes(wordsToSearchForString);
    std::string text = "content " + (example ? "\"**" + words + "**\"" : "\"" + words + "\"");
    if (!wordsToExcludeString.empty()) text += " without \"" + wordsToExcludeString + "\"";
    if (wholeWord) text += " whole words";
    if (allWords) text += " all words";
    if (searchBinaryFiles) text += " all files";
    if (useOCR) text += " use OCR";
    if (caseSensitive) text += " case sensitive";
    return text;
}

CommandApplyResult ContentSearchCommand::commandImpApply(SearchResult& to, SearchDataSourceDelegate* feedback,
                                                         const QueryContainer& forQuery) {
    if (to.isDirectory || to.url.isDirectory()) return CommandApplyResult::exclude;
    const std::string& path = to.url.path();
    const auto type = classifyContentSearchType(path);
    const ContentSearcher* searcher = ContentSearchers::searcher(path);
    const bool isArchive =
        searcher && (type == ContentSearchType::zipDirectory || type == ContentSearchType::tarDirectory);
    if (!isArchive && type && disabledContentTypes.count(*type) > 0) return CommandApplyResult::exclude;
    // The content index already matched the words in the text, as did a
    // disk cache's word index for what its content pass supplied (those
    // results alone want their summary lines collected).
    if (to.searchResultSuppliedBy == SearchResultSupplier::spotlightContent) return CommandApplyResult::accept;
    if (to.searchResultSuppliedBy == SearchResultSupplier::CompactContentIndex && to.tryCollectSummaryLines)
        return CommandApplyResult::accept;

    auto& cancellation = ContentSearchCancellation::shared();
    cancellation.startFile(path);
    CommandApplyResult verdict;
    if (isArchive) {
        verdict = applyContainerSearch(to, *searcher, *type, feedback, forQuery);
    } else if (searcher && type == ContentSearchType::sqlite) {
        verdict = applyContentSearcher(to, *searcher, feedback, forQuery);
    } else {
        verdict = applyDocumentSearch(to, feedback, forQuery);
    }
    cancellation.endFile(path);
    return verdict;
}

CommandApplyResult ContentSearchCommand::applyDocumentSearch(SearchResult& to, SearchDataSourceDelegate* feedback,
                                                             const QueryContainer& query) const {
    const std::string& path = to.url.path();
    // With words before the colon only files named after them come here, and
    // any of them is worth reading; alone, the command reads what has a reader.
    const bool searchAllFileTypes = !query.searchWords().empty() || searchBinaryFiles;
    if (!searchAllFileTypes && !ImportTextXPC::shared().importer().canImportTextFrom(path, useOCR)) {
        return CommandApplyResult::exclude;
    }
    if (feedback) feedback->supplyIncreaseNumberOfFilesContentSearched(1);
    auto match = searchTextContent(path, fileSearchOptions(query, feedback, searchAllFileTypes));
    reportFile(feedback, path, false, 100.0f);
    if (!match || ContentSearchCancellation::shared().isSkipRequested(path)) return CommandApplyResult::exclude;
    LOG("Summary: " + lastPathComponent(path));
    return accepted(to, std::move(match->foundLines), match->hitCount);
}

CommandApplyResult ContentSearchCommand::applyContentSearcher(SearchResult& to, const ContentSearcher& searcher,
                                                              SearchDataSourceDelegate* feedback,
                                                              const QueryContainer& query) const {
    auto matches = containerCatalogMatches(to.url.path(), searcher, feedback, query);
    if (ContentSearchCancellation::shared().isSkipRequested(to.url.path()) || matches.empty()) {
        return CommandApplyResult::exclude;
    }
    const auto rank = static_cast<std::int64_t>(matches.size());
    return accepted(to, std::move(matches), rank);
}

// An archive's entry names are searched when its directory type is enabled,
// the text of its members when its contents type is; with neither it is
// passed over unread.
CommandApplyResult ContentSearchCommand::applyContainerSearch(SearchResult& to, const ContentSearcher& searcher,
                                                              ContentSearchType type,
                                                              SearchDataSourceDelegate* feedback,
                                                              const QueryContainer& query) const {
    const std::string& path = to.url.path();
    const bool isZip = type == ContentSearchType::zipDirectory;
    const auto contentsType = isZip ? ContentSearchType::zipContents : ContentSearchType::tarContents;
    const bool namesEnabled = disabledContentTypes.count(type) == 0;
    const bool contentsEnabled = disabledContentTypes.count(contentsType) == 0;
    if (!namesEnabled && !contentsEnabled) return CommandApplyResult::exclude;
    std::vector<FoundItem> matches;
    if (namesEnabled) matches = containerCatalogMatches(path, searcher, feedback, query);
    if (contentsEnabled) {
        auto contents = searchContainerContents(path, isZip ? ContainerEntries::Kind::zip : ContainerEntries::Kind::tar,
                                                feedback, query);
        matches.insert(matches.end(), std::make_move_iterator(contents.begin()),
                       std::make_move_iterator(contents.end()));
    }
    if (ContentSearchCancellation::shared().isSkipRequested(path) || matches.empty()) {
        return CommandApplyResult::exclude;
    }
    const auto rank = static_cast<std::int64_t>(matches.size());
    return accepted(to, std::move(matches), rank);
}

std::vector<FoundItem> ContentSearchCommand::searchContainerContents(const std::string& path,
                                                                     ContainerEntries::Kind kind,
                                                                     SearchDataSourceDelegate* feedback,
                                                                     const QueryContainer& query) const {
    const bool searchAllFileTypes = !wordsToSearchForString.empty() || searchBinaryFiles;
    const auto options = fileSearchOptions(query, feedback, searchAllFileTypes);
    const auto entries = ContainerEntries::files(path, kind);
    std::vector<FoundItem> found;
    int searched = 0;
    for (const auto& entry : entries) {
        if ((feedback && feedback->shouldStop()) || ContentSearchCancellation::shared().isSkipRequested(path)) break;
        if (searched >= maxContainerEntriesSearched) {
            LOG("Content-in-archive: searched " + std::to_string(searched) + " of " + std::to_string(entries.size()) +
                " entries (cap) in " + lastPathComponent(path));
            break;
        }
        if (!isContainerEntryWanted(entry, options)) continue;
        ++searched;
        if (auto item = searchOneContainerEntry(path, kind, entry, options, feedback)) {
            found.push_back(std::move(*item));
        }
    }
    return found;
}

// The cheap tests on a member, before anything is extracted.
bool ContentSearchCommand::isContainerEntryWanted(const ContainerEntries::FlatEntry& entry,
                                                  const FileSearchOptions& options) const {
    const auto type = classifyContentSearchType(entry.path);
    if (type && disabledContentTypes.count(*type) > 0) return false;
    if (entry.size > maxContainerEntrySize) return false;
    return options.searchAllFileTypes ||
           ImportTextXPC::shared().importer().canImportTextFromName(lastPathComponent(entry.path), options.useOCR);
}

std::optional<FoundItem> ContentSearchCommand::searchOneContainerEntry(const std::string& containerPath,
                                                                       ContainerEntries::Kind kind,
                                                                       const ContainerEntries::FlatEntry& entry,
                                                                       const FileSearchOptions& options,
                                                                       SearchDataSourceDelegate* feedback) const {
    const std::string name = lastPathComponent(entry.path);
    if (feedback) {
        feedback->supplyIncreaseNumberOfFilesContentSearched(1);
        feedback->searchingInsideFile(name, true, 0.0f);
    }
    auto found = extractedEntryMatch(containerPath, kind, entry, options);
    if (feedback) feedback->searchingInsideFile(name, false, 100.0f);
    return found;
}

// The member written to a folder of its own, which goes with everything in
// it on every way out, and read like a file on disk.
std::optional<FoundItem> ContentSearchCommand::extractedEntryMatch(const std::string& containerPath,
                                                                   ContainerEntries::Kind kind,
                                                                   const ContainerEntries::FlatEntry& entry,
                                                                   const FileSearchOptions& options) const {
    const std::string name = lastPathComponent(entry.path);
    // A crafted name like ".." would put the target outside the folder.
    if (name.empty() || name == "." || name == "..") return std::nullopt;
    const auto folder = ArchiveTempDirectory::create();
    if (!folder) {
        LOG("Content-in-archive: no temporary folder for " + entry.path);
        return std::nullopt;
    }
    const std::string target = folder->path() + "/" + name;
    auto* feedback = options.feedbackHandler;
    const ContentProgress progress{{}, [feedback, &containerPath] {
                                       return (feedback && feedback->shouldStop()) ||
                                              ContentSearchCancellation::shared().isSkipRequested(containerPath);
                                   }};
    if (const auto failure = ContainerEntries::extract(containerPath, kind, entry.path, target, progress)) {
        LOG("Content-in-archive: extract failed for " + entry.path + ": " + *failure);
        return std::nullopt;
    }
    const auto match = searchTextContent(target, options, entry.path);
    if (!match || match->foundLines.empty()) return std::nullopt;
    const auto count = match->foundLines.size();
    FoundItem item;
    item.type = FoundItem::Category::file;
    item.title = count == 1 ? name : name + "  (" + std::to_string(count) + " matches)";
    item.location = entry.path;
    item.size = entry.size;
    item.modified = entry.modified;
    return item;
}

std::vector<FoundItem> ContentSearchCommand::containerCatalogMatches(const std::string& path,
                                                                     const ContentSearcher& searcher,
                                                                     SearchDataSourceDelegate* feedback,
                                                                     const QueryContainer& query) const {
    if (feedback) feedback->supplyIncreaseNumberOfFilesContentSearched(1);
    ContentProgress progress{[feedback, &path](float percentage) { reportFile(feedback, path, true, percentage); },
                             [feedback, &path] {
                                 return (feedback && feedback->shouldStop()) ||
                                        ContentSearchCancellation::shared().isSkipRequested(path);
                             }};
    auto matches = searcher.search(path, searchWords(query), allWords, isCaseSensitive(query), progress);
    reportFile(feedback, path, false, 100.0f);
    return matches;
}

std::optional<ContentSearchCommand::TextMatch> ContentSearchCommand::searchTextContent(
    const std::string& path, const FileSearchOptions& options, std::string_view entryLabel) const {
    LOG("Start: " + path);
    std::optional<ImportTextResult> imported;
    std::string joinedPages;
    const std::optional<std::string_view> read = readText(path, options, imported, joinedPages);
    LOG("End: " + lastPathComponent(path));
    if (!read) return std::nullopt;
    const std::string_view allText = *read;
    const std::optional<std::int64_t> asciiHits = asciiHitCount(allText, options);
    if (asciiHits == 0) return std::nullopt;
    if (asciiHits && !options.collectsFoundLines) return TextMatch{{}, *asciiHits};
    // Text read in the program is checked for UTF-8 only now, once the
    // cheaper test above has turned most files away.
    if (!isValidUTF8(allText)) return std::nullopt;
    const FoldedText text(FoldedText::decode(allText), !options.caseSensitive);
    const auto hits = textIncludes(text, options);
    if (!hits) return std::nullopt;
    if (!options.collectsFoundLines) return TextMatch{{}, hitCount(*hits)};
    if (!imported) imported = ImportTextResult{onePage(std::string(allText)), std::nullopt};
    return textMatch(text.original(), *hits, *imported, options.useOCR, entryLabel);
}

// Small plain text is read here, into a buffer that each thread keeps from
// file to file: most files a search reads are such, and most don't match.
std::optional<std::string_view> ContentSearchCommand::readText(const std::string& path,
                                                               const FileSearchOptions& options,
                                                               std::optional<ImportTextResult>& imported,
                                                               std::string& joinedPages) const {
    thread_local std::string plainText;
    if (auto plain = ImportTextXPC::shared().plainSmallText(path, plainText)) return plain;
    imported = importedText(path, options);
    if (!imported) return std::nullopt;
    return imported->allTextView(options.useOCR, joinedPages);
}

std::optional<ImportTextResult> ContentSearchCommand::importedText(const std::string& path,
                                                                   const FileSearchOptions& options) const {
    auto& service = ImportTextXPC::shared();
    if (!options.searchAllFileTypes && !service.importer().canImportTextFrom(path, options.useOCR)) {
        return std::nullopt;
    }
    std::optional<ImportTextResult> imported;
    auto* feedback = options.feedbackHandler;
    service.importText(
        path, options.searchAllFileTypes, std::numeric_limits<std::int64_t>::max(), options.useOCR,
        [feedback, &path](float percentage) { reportFile(feedback, path, true, percentage); },
        [&imported](std::optional<Error> error, std::optional<ImportTextResult> result) {
            if (!error) imported = std::move(result);
        });
    return imported;
}

std::vector<std::string> ContentSearchCommand::searchWordParts(std::string_view words) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    while (start <= words.size()) {
        std::size_t comma = words.find(',', start);
        if (comma == std::string_view::npos) comma = words.size();
        const std::string_view piece = dequoted(trimmedText(words.substr(start, comma - start)));
        if (!piece.empty()) parts.emplace_back(piece);
        start = comma + 1;
    }
    return parts;
}

bool ContentSearchCommand::isCaseSensitive(const QueryContainer& query) const {
    return caseSensitive || query.matchIsCaseSensitive();
}

std::vector<std::string> ContentSearchCommand::searchWords(const QueryContainer& query) const {
    auto words = searchWordParts(wordsToSearchForString);
    if (!isCaseSensitive(query)) {
        for (auto& word : words) word = lowercased(word);
    }
    return words;
}

ContentSearchCommand::FileSearchOptions ContentSearchCommand::fileSearchOptions(const QueryContainer& query,
                                                                                SearchDataSourceDelegate* feedback,
                                                                                bool searchAllFileTypes) const {
    FileSearchOptions options;
    options.wordsOfInterest = searchWords(query);
    options.wordsToExclude = searchWordParts(wordsToExcludeString);
    options.wholeWords = wholeWord;
    options.allWords = allWords;
    options.useOCR = useOCR;
    options.caseSensitive = isCaseSensitive(query);
    options.searchAllFileTypes = searchAllFileTypes;
    options.collectsFoundLines = !feedback || feedback->needsFoundLines();
    options.feedbackHandler = feedback;
    return options;
}

std::optional<std::int64_t> ContentSearchCommand::asciiHitCount(std::string_view text,
                                                                const FileSearchOptions& options) {
    const auto& words = options.wordsOfInterest;
    if (!std::all_of(words.begin(), words.end(), [](const std::string& word) { return isASCII(word); })) {
        return std::nullopt;
    }
    const std::optional<std::string_view> searched = loweredASCII(text, options.caseSensitive);
    if (!searched) return std::nullopt;
    std::int64_t total = 0;
    bool anyMissing = false;
    std::vector<std::string_view> counted;
    for (const std::string& word : words) {
        if (std::find(counted.begin(), counted.end(), word) != counted.end()) continue;
        counted.push_back(word);
        const std::int64_t hits = word.empty() ? 0 : occurrences(*searched, word);
        anyMissing = anyMissing || hits == 0;
        total += hits;
    }
    if (total == 0 || (options.allWords && anyMissing)) return 0;
    if (options.wholeWords) return std::nullopt;
    for (const std::string& excluded : options.wordsToExclude) {
        if (!isASCII(excluded)) return std::nullopt;
        const std::string needle = options.caseSensitive ? excluded : lowercased(excluded);
        if (!needle.empty() && searched->find(needle) != std::string_view::npos) return 0;
    }
    return total;
}

std::optional<ContentSearchCommand::WordHits> ContentSearchCommand::textIncludes(const FoldedText& text,
                                                                                 const FileSearchOptions& options) {
    WordHits hits;
    std::size_t total = 0;
    for (const auto& word : options.wordsOfInterest) {
        const bool seen =
            std::any_of(hits.begin(), hits.end(), [&](const auto& listed) { return listed.first == word; });
        if (seen) continue;
        auto ranges = text.rangesOf(word, options.wholeWords);
        if (ranges.empty() && options.allWords) return std::nullopt;
        total += ranges.size();
        hits.emplace_back(word, std::move(ranges));
    }
    // Only an excluded word's first occurrence is looked at.
    for (const auto& excluded : options.wordsToExclude) {
        const auto first = text.firstRangeOf(excluded);
        if (first && (!options.wholeWords || text.isWholeWord(*first))) return std::nullopt;
    }
    if (total == 0) return std::nullopt;
    return hits;
}

ContentSearchCommand::TextMatch ContentSearchCommand::textMatch(const std::u32string& text, const WordHits& hits,
                                                                const ImportTextResult& located, bool useOCR,
                                                                std::string_view entryLabel) {
    TextMatch match;
    std::vector<TextRange> ranges;
    for (const auto& [word, wordRanges] : hits) ranges.insert(ranges.end(), wordRanges.begin(), wordRanges.end());
    match.hitCount = hitCount(hits);
    const ImportTextLocator locator(located, useOCR);
    for (const auto& summary : ContentSummary::of(text, ranges)) {
        FoundItem item;
        item.type = FoundItem::Category::summary;
        item.location = locator.at(summary.range.start);
        if (!entryLabel.empty()) {
            item.location =
                item.location.empty() ? std::string(entryLabel) : std::string(entryLabel) + " \u2014 " + item.location;
        }
        item.title = item.location.empty() ? summary.snippet : item.location + ":  " + summary.snippet;
        match.foundLines.push_back(std::move(item));
    }
    return match;
}

}  // namespace quester
