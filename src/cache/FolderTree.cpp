#include "cache/FolderTree.h"

#include <algorithm>
#include <set>

#include "cache/PackedNumbers.h"

namespace quester {

namespace {

constexpr const char* recordGroup = "F";
constexpr const char* childGroup = "C";

std::string decimal(std::uint32_t id) {
    return std::to_string(id);
}

}  // namespace

Result<std::optional<FSItem>> FolderTree::record(std::uint32_t id) {
    return store.get<FSItem>(recordGroup, decimal(id));
}

Result<std::vector<std::uint32_t>> FolderTree::loadChildIds(std::uint32_t id) {
    Result<std::optional<std::string>> data = store.get<std::string>(childGroup, decimal(id));
    if (!data) return data.error();
    if (!*data) return std::vector<std::uint32_t>();
    return unpackDeltaStored(**data);
}

Status FolderTree::saveChildIds(std::uint32_t id, const std::vector<std::uint32_t>& ids) {
    forgetFolder(id);
    return store.put(storeDeltaPacked(ids), childGroup, decimal(id));
}

Result<std::shared_ptr<const FolderTree::FolderContents>> FolderTree::loadFolderContents(std::uint32_t id) {
    std::shared_ptr<const FolderContents> cached = folderContentsCache.access([&](auto& entries) {
        auto hit = std::find_if(entries.begin(), entries.end(), [&](const auto& entry) { return entry.first == id; });
        if (hit == entries.end()) return std::shared_ptr<const FolderContents>();
        std::iter_swap(hit, entries.begin());
        return entries.front().second;
    });
    if (cached) return cached;
    Result<std::vector<std::uint32_t>> children = loadChildIds(id);
    if (!children) return children.error();
    auto contents = std::make_shared<FolderContents>();
    for (std::uint32_t child : *children) {
        Result<std::optional<FSItem>> item = record(child);
        if (!item) return item.error();
        if (*item) contents->emplace((*item)->name, **item);
    }
    folderContentsCache.access([&](auto& entries) {
        entries.emplace_back(id, contents);
        if (entries.size() > folderCacheSize) entries.pop_back();
    });
    return std::shared_ptr<const FolderContents>(contents);
}

void FolderTree::forgetFolder(std::uint32_t id) {
    folderContentsCache.access(
        [&](auto& entries) { std::erase_if(entries, [&](const auto& entry) { return entry.first == id; }); });
}

void FolderTree::forgetAllFolders() {
    folderContentsCache.access([](auto& entries) { entries.clear(); });
}

Result<std::uint32_t> FolderTree::lastID() {
    Result<std::optional<std::uint32_t>> last = store.get<std::uint32_t>(recordGroup, lastAutoIDKey);
    if (!last) return last.error();
    return last->value_or(0);
}

Result<std::uint32_t> FolderTree::nextID() {
    Result<std::uint32_t> last = lastID();
    if (!last) return last.error();
    std::uint32_t next = *last + 1;
    if (Status stored = store.put(next, recordGroup, lastAutoIDKey); !stored) return stored.error();
    return next;
}

Status FolderTree::writeRecord(const FSItem& item) {
    return store.put(item, recordGroup, decimal(item.fsid));
}

Status FolderTree::write(const FSItem& item) {
    if (item.isDirectory()) forgetFolder(item.parentID);
    Result<std::vector<std::uint32_t>> siblings = loadChildIds(item.parentID);
    if (!siblings) return siblings.error();
    siblings->push_back(item.fsid);
    forgetFolder(item.parentID);
    return store.put({{DataConvertible<FSItem>::asData(item), recordGroup, decimal(item.fsid)},
                      {storeDeltaPacked(*siblings), childGroup, decimal(item.parentID)}});
}

Result<std::optional<FSItem>> FolderTree::findItem(const std::vector<std::string>& parts) {
    FSItem current = FSItem::root();
    for (const std::string& part : parts) {
        Result<std::shared_ptr<const FolderContents>> contents = loadFolderContents(current.fsid);
        if (!contents) return contents.error();
        auto found = (*contents)->find(part);
        if (found == (*contents)->end()) return std::optional<FSItem>();
        current = found->second;
    }
    return std::optional<FSItem>(current);
}

Result<std::optional<FSItem>> FolderTree::insert(const std::vector<std::string>& parts, const FSItem& leaf) {
    if (parts.empty()) return std::optional<FSItem>();
    std::uint32_t parent = 0;
    for (std::size_t i = 0; i + 1 < parts.size(); ++i) {
        Result<std::shared_ptr<const FolderContents>> contents = loadFolderContents(parent);
        if (!contents) return contents.error();
        if (auto found = (*contents)->find(parts[i]); found != (*contents)->end()) {
            parent = found->second.fsid;
            continue;
        }
        Result<std::uint32_t> id = nextID();
        if (!id) return std::optional<FSItem>();
        FSItem folder{*id, parent, FSItem::types::directory, parts[i], 0, 0, 1, 0};
        if (Status written = write(folder); !written) return written.error();
        parent = *id;
    }
    Result<std::uint32_t> id = nextID();
    if (!id) return std::optional<FSItem>();
    FSItem item = leaf;
    item.fsid = *id;
    item.parentID = parent;
    item.name = parts.back();
    if (Status written = write(item); !written) return written.error();
    return std::optional<FSItem>(item);
}

Result<std::optional<std::string>> FolderTree::relativePath(std::uint32_t id) {
    Result<std::optional<FSItem>> item = record(id);
    if (!item) return item.error();
    if (!*item) return std::optional<std::string>();
    std::string path = (*item)->name;
    std::set<std::uint32_t> visited{id};
    std::uint32_t parent = (*item)->parentID;
    while (visited.insert(parent).second) {
        Result<std::optional<FSItem>> above = record(parent);
        if (!above || !*above) break;
        path = (*above)->name + "/" + path;
        parent = (*above)->parentID;
    }
    return std::optional<std::string>(path);
}

Status FolderTree::removeRecordsBelow(const FSItem& item, std::vector<std::uint32_t>& removed,
                                      std::set<std::uint32_t>& seen) {
    if (!seen.insert(item.fsid).second) return Status::success();
    if (item.isDirectory()) {
        Result<std::vector<std::uint32_t>> children = loadChildIds(item.fsid);
        if (!children) return children.error();
        for (std::uint32_t child : *children) {
            Result<std::optional<FSItem>> below = record(child);
            if (!below) return below.error();
            if (*below)
                if (Status gone = removeRecordsBelow(**below, removed, seen); !gone) return gone;
        }
        forgetFolder(item.fsid);
        if (Status gone = store.remove(childGroup, decimal(item.fsid)); !gone) return gone;
    }
    removed.push_back(item.fsid);
    return store.remove(recordGroup, decimal(item.fsid));
}

Result<std::vector<std::uint32_t>> FolderTree::removeFSItem(std::uint32_t id) {
    Result<std::optional<FSItem>> item = record(id);
    if (!item || !*item) return std::vector<std::uint32_t>();
    std::vector<std::uint32_t> removed;
    std::set<std::uint32_t> seen;
    if (Status gone = removeRecordsBelow(**item, removed, seen); !gone) return gone.error();
    Result<std::vector<std::uint32_t>> siblings = loadChildIds((*item)->parentID);
    if (!siblings) return siblings.error();
    std::erase(*siblings, id);
    if (Status saved = saveChildIds((*item)->parentID, *siblings); !saved) return saved.error();
    return removed;
}

}  // namespace quester
