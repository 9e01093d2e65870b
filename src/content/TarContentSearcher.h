#pragma once

#include <string>
#include <vector>

#include "content/ContentSearcher.h"

namespace quester {

// Searches tar files by entry name. Extraction is `TarArchive::extract`.
// Holds no state.
class TarContentSearcher final : public ContentSearcher {
public:
    // A file whose type conforms to tar, or named ".tar".
    bool canSearch(const std::string& path) const override;
    std::vector<FoundItem> search(const std::string& path, const std::vector<std::string>& words, bool allWords,
                                  bool caseSensitive, const ContentProgress& progress) const override;
};

}  // namespace quester
