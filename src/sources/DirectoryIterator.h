#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "sources/FSItemAndAttrs.h"

namespace quester {

// Lists one directory fast: getdents64 on an O_DIRECTORY descriptor into one
// 64 KiB buffer, with the entry type taken from d_type, so that only entries
// that are kept and wanted cost a further call (one statx each, relative to
// the directory descriptor). Symbolic links and special files are dropped.
//
// One iterator is used by one thread at a time; it owns its buffer and may
// list any number of directories one after the other.
class DirectoryIterator {
public:
    static constexpr std::size_t attrBufferSize = 65536;

    struct Listing {
        int errnum = 0;  // set when reading failed part way; `items` holds what was read
        std::vector<FSItemAndAttrs> items;
    };

    // Files and folders of a directory as paths; symbolic links, to folders too, count as files.
    struct Contents {
        std::vector<std::string> files;
        std::vector<std::string> directories;
    };

    // Asked once per kept entry with its full path and folder flag: true to
    // read its size, times and identity (`attributesRead` tells the answer).
    using AttributeFilter = std::function<bool(const std::string& fullPath, bool isDirectory)>;

    DirectoryIterator();

    // The regular files and folders of `path`, in the order the file system
    // gives them. A trailing "/" is ignored; an empty path lists nothing. A
    // directory that can't be opened gives errnum 0 and no items. An entry
    // that vanishes before its statx is left out. Without a filter every
    // entry's attributes are read.
    Listing contentsOfDirectoryAtPath(std::string_view path, const AttributeFilter& wantsAttributes = {});

    // Every entry of `path` (special files included, as files), split by
    // whether it is a real folder. No attributes are read beyond the type.
    static Contents urlContentsOfDirectory(std::string_view path);

private:
    std::unique_ptr<std::byte[]> attrBuffer;
};

}  // namespace quester
