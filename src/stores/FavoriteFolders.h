#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "stores/Preferences.h"
#include "support/NotificationCenter.h"

namespace quester {

// Folders a person keeps at hand, each under a keyword that the query
// language's "~keyword" finds and a location name resolves: a map from
// keyword to path under the preference "RememberedFolders". Changes read the
// map as the file holds it now and write it back under its lock. Entries
// whose path is no text are dropped. Posts "FavoriteFolders.DidChange" after
// each save. Any thread.
class FavoriteFolders {
public:
    static constexpr const char* DidChangeNotification = "FavoriteFolders.DidChange";
    static constexpr const char* key = "RememberedFolders";

    explicit FavoriteFolders(Preferences& preferences = Preferences::shared(),
                             NotificationCenter& center = NotificationCenter::shared());

    std::map<std::string, std::string> keyFolderPairs() const;
    // The pairs sorted by keyword.
    std::vector<std::pair<std::string, std::string>> displayItems() const;
    std::optional<std::string> folderForKeyword(const std::string& keyword) const;

    // Stores the folder under the keyword `name`, or without one under its
    // last component up to the first blank, lower-cased; a keyword that is
    // taken gets "-1", "-2"… instead of its own ending after a "-". Answers
    // the keyword used.
    Result<std::string> add(const std::string& path, const std::optional<std::string>& name = std::nullopt);
    // Removes the pair at that index of `displayItems`.
    Status deleteDisplayItem(std::size_t index);
    // Removes the keyword's pair; false when there was none.
    Result<bool> remove(const std::string& keyword);

    // The keyword of the downloads folder: the one named by
    // "RememberedFoldersDownloadsFolderName" (else "downloads"), or else the
    // first whose path holds "download".
    std::optional<std::string> downloadsName() const;

    // At the first launch the desktop folder of `home` is added; then, always,
    // its downloads folder unless one is there.
    void startup(const std::string& home);
    void ensureDownloadsExists(const std::string& home);

private:
    Preferences& preferences;
    NotificationCenter& center;
};

}  // namespace quester
