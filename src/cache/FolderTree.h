#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "cache/FSItem.h"
#include "cache/SimpleLMDB.h"
#include "support/Locked.h"
#include "support/Result.h"

namespace quester {

// The records of a cache's tree: group "F" (one record per file or folder,
// and the identifier counter "private.lastAutoID") and group "C" (each
// folder's children, ascending, delta coded and packed). Identifiers start at
// 1 and are never reused; 0 is the target, with a child list but no record.
//
// Keeps the contents of the 64 folders used last, most used first. Any thread;
// the store's own rules say which thread may write.
class FolderTree {
public:
    using FolderContents = std::map<std::string, FSItem, std::less<>>;
    static constexpr std::size_t folderCacheSize = 64;
    static constexpr const char* lastAutoIDKey = "private.lastAutoID";

    explicit FolderTree(SimpleLMDB& store) : store(store) {}

    Result<std::optional<FSItem>> record(std::uint32_t id);
    Result<std::vector<std::uint32_t>> loadChildIds(std::uint32_t id);
    // Stores the list and forgets the folder's cached contents.
    Status saveChildIds(std::uint32_t id, const std::vector<std::uint32_t>& ids);
    // Name to record of a folder's children; a child whose record fails to read
    // is left out, and of two with one name the first stays.
    Result<std::shared_ptr<const FolderContents>> loadFolderContents(std::uint32_t id);
    void forgetFolder(std::uint32_t id);
    void forgetAllFolders();

    // The last identifier given out; 0 before the first.
    Result<std::uint32_t> lastID();
    // The next identifier, counted on in the store.
    Result<std::uint32_t> nextID();
    // Stores the record alone.
    Status writeRecord(const FSItem& item);
    // Stores the record and appends it to its parent's child list.
    Status write(const FSItem& item);

    // The item at the given names below the target; the root for no names.
    Result<std::optional<FSItem>> findItem(const std::vector<std::string>& parts);
    // The folders of the path, made when missing (as folders without dates),
    // and then `leaf` made for the last part under them.
    Result<std::optional<FSItem>> insert(const std::vector<std::string>& parts, const FSItem& leaf);
    // The names from the target down to the item, or none when the item has
    // no record. Stops at a missing parent or a cycle.
    Result<std::optional<std::string>> relativePath(std::uint32_t id);
    // Removes the item and, for a folder, everything below it: records and
    // the parent's entry. Answers the identifiers removed.
    Result<std::vector<std::uint32_t>> removeFSItem(std::uint32_t id);

private:
    // `seen` ends the walk at a child list that names an ancestor.
    Status removeRecordsBelow(const FSItem& item, std::vector<std::uint32_t>& removed, std::set<std::uint32_t>& seen);

    SimpleLMDB& store;
    Locked<std::vector<std::pair<std::uint32_t, std::shared_ptr<const FolderContents>>>> folderContentsCache;
};

}  // namespace quester
