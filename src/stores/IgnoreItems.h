#pragma once

#include <functional>
#include <string>
#include <vector>

#include "stores/IgnoreItem.h"
#include "stores/Preferences.h"

namespace quester {

// What a person never wants to see in results: folder names or pieces of
// paths ("ignoreFolders") and file extensions without their point
// ("ignoreExtensions"), two lists of text in the preferences. A search holds
// its own copy, read when it starts, and tests every result against it
// whichever source found it.
//
// Reading and testing are plain and may run on any thread once loaded;
// changing is for one thread at a time. Changes read the lists as the
// preferences file holds them now and write them back under its lock.
class IgnoreItems {
public:
    static constexpr const char* foldersKey = "ignoreFolders";
    static constexpr const char* extensionsKey = "ignoreExtensions";

    // Loads the two lists. A folder text that begins with "/Volumes/" loses
    // that prefix; elements that aren't text are dropped.
    explicit IgnoreItems(Preferences& preferences = Preferences::shared());

    const std::vector<IgnoreItem>& pathComponents() const { return components; }
    const std::vector<IgnoreItem>& pathExtensions() const { return extensions; }

    // An item of that exact text is on the folder list.
    bool contains(const std::string& path) const;
    // An item of that exact text is on the extension list.
    bool containsExtension(const std::string& extension) const;
    // Whether a path falls under the list: a folder item with a "/" matches
    // wherever its text stands in the path, one without matches a whole
    // component; an extension item matches the extension of any component,
    // so the items inside a folder or package of that extension go too. Case
    // matters.
    bool includesFolder(const std::string& path) const;
    // The test of a result: `includesFolder`, then the path's own extension.
    bool ignores(const std::string& path) const;

    // "Extensions", the extensions with a point before them, "Files & Folders",
    // the folder items; each part sorted by text.
    std::vector<IgnoreItem> itemsForDisplay() const;
    // Replaces the text of the display row at `index` (same place, same id);
    // an extension loses its punctuation and white space.
    Status changeDisplayItemValue(std::size_t index, const std::string& newValue, bool save);

    // Unless the folder list holds it already, appends it and saves.
    Status add(const std::string& path);
    // Drops one leading ".", and unless nothing is left or the list holds it
    // already, appends it and saves.
    Status addFileExtension(const std::string& fileExtension);
    // Takes the item of that id from both lists and saves.
    Status remove(const Uuid& id);
    // Takes the items of that text (an extension with or without its point)
    // and saves; false when there was none.
    Result<bool> removeText(IgnoreItemType type, const std::string& text);

    Status save();
    // At launch: "firstIgnoreItemsLoad" becomes true. The list starts empty.
    void startup();

private:
    void load();
    // Applies `edit` to the lists as the file holds them, saves them, and
    // keeps what was saved.
    Status change(
        const std::function<void(std::vector<std::string>& folders, std::vector<std::string>& extensions)>& edit);

    Preferences& preferences;
    std::vector<IgnoreItem> components;
    std::vector<IgnoreItem> extensions;
};

}  // namespace quester
