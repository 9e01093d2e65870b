#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "content/ContentProgress.h"
#include "content/WordMatcher.h"
#include "query/FoundItem.h"
#include "support/PathText.h"

namespace quester {

// The search of an archive by entry names, shared by the archive searchers:
// each entry's last path component is tested against the words; the "._"
// sidecars (and, for zip, the "__MACOSX/" folder they are kept in) are
// passed over, since they belong to another entry.
class EntryNameSearch {
public:
    // How often the stop flag is asked and progress reported, in entries.
    static constexpr std::size_t checkInterval = 4'096;

    // The hits among `entries` (anything with a `path`), made by
    // `makeItem(entry, name)`. Stops with what it found when cancelled.
    template <typename Entry, typename MakeItem>
    static std::vector<FoundItem> run(const std::vector<Entry>& entries, const WordMatcher& matcher,
                                      bool passOverMacOSXFolder, const ContentProgress& progress, MakeItem makeItem) {
        std::vector<FoundItem> found;
        for (std::size_t index = 0; index < entries.size(); ++index) {
            if (index % checkInterval == 0) {
                if (progress.cancelled()) return found;
                progress.reportPercentage(static_cast<float>(index) / static_cast<float>(entries.size()) * 100);
            }
            const Entry& entry = entries[index];
            const std::string_view name = lastPathComponentView(entry.path);
            if (passOverMacOSXFolder && entry.path.starts_with("__MACOSX/")) continue;
            if (name.starts_with("._") || !matcher.matches(name)) continue;
            found.push_back(makeItem(entry, name));
        }
        return found;
    }

    // `run` over the entries `listEntries(path)` gives (none when the file
    // can't be read); nothing at all when no word is left.
    template <typename ListEntries, typename MakeItem>
    static std::vector<FoundItem> inFile(const std::string& path, const std::vector<std::string>& words, bool allWords,
                                         bool caseSensitive, bool passOverMacOSXFolder, const ContentProgress& progress,
                                         ListEntries listEntries, MakeItem makeItem) {
        const WordMatcher matcher(words, allWords, caseSensitive);
        if (!matcher.hasWords()) return {};
        return run(listEntries(path), matcher, passOverMacOSXFolder, progress, makeItem);
    }
};

}  // namespace quester
