#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/FileSystem.h"
#include "sources/FSItemAndAttrs.h"

namespace quester {

// Lists one directory fast through the file-system layer: entries in bulk
// into one 64 KiB buffer, with the entry type taken from the listing, so that
// only entries that are kept and wanted cost a further call (one status each,
// relative to the open directory). Symbolic links and special files are
// dropped.
//
// One iterator is used by one thread at a time; it owns its buffer and may
// list any number of directories one after the other.
class DirectoryIterator {
public:
    static constexpr std::size_t attrBufferSize = 65536;

    struct Listing {
        // Why the directory couldn't be opened; then there are no items.
        std::optional<Error> openError;
        // Why reading stopped part way; `items` holds what was read before.
        std::optional<Error> readError;
        std::vector<FSItemAndAttrs> items;
    };

    // Files and folders of a directory as paths; symbolic links, to folders too, count as files.
    struct Contents {
        std::vector<std::string> files;
        std::vector<std::string> directories;
    };

    // Asked once per regular file or folder with its full path (valid during
    // the call only) and folder flag: true to keep it as wanted, with its
    // attributes unless they are not to be read. A file it turns down is left
    // out; a folder is kept, not wanted and without attributes.
    using AttributeFilter = std::function<bool(std::string_view fullPath, bool isDirectory)>;

    // `fileSystem` must outlive the iterator.
    explicit DirectoryIterator(FileSystem& fileSystem = FileSystem::real());

    // Whether wanted entries get their attributes (the default): one status
    // call each, often the dearest part of a listing that keeps many.
    void setReadsAttributes(bool reads) { readsAttributes = reads; }

    // The regular files and folders of `path`, in the order the file system
    // gives them. A trailing "/" is ignored; an empty path lists nothing. An
    // entry that vanishes before its status is read is left out. Without a
    // filter every entry's attributes are read.
    Listing contentsOfDirectoryAtPath(std::string_view path, const AttributeFilter& wantsAttributes = {});
    // The same for a directory already open, whose items' paths begin with `path`.
    Listing contentsOfDirectory(DirectoryHandle& directory, std::string_view path,
                                const AttributeFilter& wantsAttributes = {});

    // Every entry of `path` (special files included, as files), split by
    // whether it is a real folder. No attributes are read beyond the type.
    static Contents urlContentsOfDirectory(std::string_view path, FileSystem& fileSystem = FileSystem::real());

private:
    FileSystem& fileSystem;
    std::unique_ptr<std::byte[]> attrBuffer;
    std::vector<DirectoryEntry> batch;
    bool readsAttributes = true;
};

}  // namespace quester
