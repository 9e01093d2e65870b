#pragma once

#include <string>
#include <string_view>

#include "support/Result.h"

namespace quester {

// Checks a cache file's pages before LMDB maps it. LMDB trusts every size
// and page number a file states, and a damaged file makes it read past the
// end of the map or fail an assertion, either of which ends the process. This
// walks the header and every page that the newest header reaches (both trees
// and the free-page list) and tests what LMDB takes for granted: the last
// page lies inside the file, pages say where they are, node tables and keys
// fit their page, values fit their page or their overflow pages, page
// numbers stay below the last page, and no page is reached twice.
//
// Reads the LMDB 0.9 layout of a 64-bit build, the only one this program
// writes. A missing or empty file passes (LMDB makes a new one).
class CacheFileCheck {
public:
    // `corrupt` with the first fault found; `ioError` when unreadable.
    static Status check(const std::string& path);
    // The same over the file's bytes.
    static Status checkBytes(std::string_view file);
    // `check`, unless the file is as it was when it last passed. The walk
    // reads the whole file, which costs more than a selective search of it,
    // and every search opens its caches anew. A file that passed is known by
    // its device, inode, size, modification and change times, kept in this
    // process and in `stampPath` beside the file for the next process; any
    // write, truncation or replacement changes one of them.
    static Status checkUnlessUnchanged(const std::string& path);
    static std::string stampPath(const std::string& path);
};

}  // namespace quester
