#pragma once

#include <string>

#include "support/Result.h"

namespace quester {

// A lasting reference to a file on a disk that may be unplugged, or mounted
// at another place, by the time it is used again: the path, the key of the
// disk that held the file's folder, and the path below that disk's mount
// point. The file itself need not exist (a copy not yet made).
//
// A mount point outlives its disk as an empty folder, so the path alone
// proves nothing: the reference resolves to its path only while the disk
// found there has the recorded key; to the same place below the disk's new
// mount point when that disk is mounted elsewhere (stale: make it again);
// and to `notFound` otherwise, so that nothing is written into an empty mount
// point or onto another disk. A plain value; resolving reads the mount table
// and is safe from any thread.
struct Bookmark {
    std::string path;
    std::string diskKey;
    std::string pathOnDisk;  // below the mount point, without a leading "/"
    // The reference is to a folder whose own disk counts (a disk's mount
    // point among them), not the disk of the folder that holds it.
    bool isFolder = false;

    struct Resolved {
        std::string path;
        bool isStale = false;
    };

    // notFound when the file's folder is missing or its disk has no key.
    static Result<Bookmark> make(const std::string& path);
    // notFound when the folder is missing or its disk has no key.
    static Result<Bookmark> makeForFolder(const std::string& folder);
    Result<Resolved> resolve() const;

    bool operator==(const Bookmark&) const = default;
};

}  // namespace quester
