#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quester {

class SearchDataSource;
struct SearchResult;

// What a running source reports to. Sources call it from their own threads,
// several at once, so implementations are thread-safe. The progress reports
// do nothing unless an implementation wants them.
class SearchDataSourceDelegate {
public:
    virtual ~SearchDataSourceDelegate() = default;

    // Polled by sources between units of work: true ends the search soon.
    virtual bool shouldStop() const = 0;
    // Whether system, invisible and in-package items are wanted.
    virtual bool showHiddenItems() const = 0;
    // Whether found items need their sizes and dates. A source that pays a
    // call per item for them may leave them unread (as 0) when not.
    virtual bool needsItemAttributes() const { return true; }
    // Whether the lines where a content criterion found its words are shown.
    // When not, a match needs only its number of hits.
    virtual bool needsFoundLines() const { return true; }

    // One batch of found items.
    virtual void supplySearchResults(std::vector<SearchResult> results, SearchDataSource& fromDataSource) = 0;
    virtual void supplyIncreaseNumberOfFilesContentSearched(std::int64_t increaseNumberOfFiles) {
        (void)increaseNumberOfFiles;
    }
    virtual void supplySearchedDirectoriesProgress(std::int64_t numberOfDirecories) { (void)numberOfDirecories; }
    // Folders the source found but couldn't read (or wouldn't enter, such as
    // one too deep for the system) and left out.
    virtual void supplySkippedDirectories(std::int64_t numberOfDirectories) { (void)numberOfDirectories; }
    // The file being read now.
    virtual void searchingInsideFile(const std::string& name, bool inProgress, float percentageProgress) {
        (void)name, (void)inProgress, (void)percentageProgress;
    }
    // The source found the query unusable.
    virtual void searchInvalidQuery() {}
};

}  // namespace quester
