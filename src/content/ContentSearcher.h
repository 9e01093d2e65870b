#pragma once

#include <string>
#include <vector>

#include "content/ContentProgress.h"
#include "query/FoundItem.h"

namespace quester {

// A reader of one kind of container whose inside is searched without text
// import: an archive's entry names, a database's rows. Searching never fails:
// an unreadable, malformed or truncated file gives an empty list or what was
// found before the damage. Implementations hold no state, so one instance
// serves every thread.
class ContentSearcher {
public:
    virtual ~ContentSearcher() = default;

    // Whether this searcher reads the file at `path`.
    virtual bool canSearch(const std::string& path) const = 0;
    // The hits for `words` (any of them, or all with `allWords`), compared
    // without regard to case and diacritics unless `caseSensitive`.
    virtual std::vector<FoundItem> search(const std::string& path, const std::vector<std::string>& words, bool allWords,
                                          bool caseSensitive, const ContentProgress& progress) const = 0;
};

}  // namespace quester
