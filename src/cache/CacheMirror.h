#pragma once

#include <string>

#include "platform/FileSystem.h"
#include "support/Result.h"

namespace quester {

class ContentIndex;

// Keeps a shared cache's two files equal: the local file that this program
// opens, and the shared copy at a place the user chose (a network volume,
// a disk another machine also uses). LMDB runs without a lock file, so no
// two parties open one file: each works on its own local copy, and whole
// files are copied, the newer over the older.
//
// A copy never loses data: it goes to a temporary file beside the
// destination, gets the source's modification date (read back, since FAT
// and network file systems round dates), and is then renamed over the
// destination; a copy that fails part way leaves both files as they were.
// Where a file system rounds dates to whole seconds, dates closer than
// `dateTolerance` count as equal, so a rounded date never sends the file
// back. A shared copy written within `busySeconds` (in either
// direction of the clock) is taken to be in the middle of another party's
// update and left alone unless the caller insists.
//
// The shared copy is reached through its `Bookmark`: on a disk that is not
// the one recorded (an empty mount point, another disk mounted there) it is
// unavailable and nothing is written there.
//
// Runs on the thread of a build or of a search; the one writer lock of the
// caches folder (see `ContentIndexBuild`) keeps two builds of this machine
// apart, and the busy rule two machines.
class CacheMirror {
public:
    static constexpr double busySeconds = 120;
    static constexpr double dateTolerance = 2.0;
    static constexpr std::size_t copyChunk = 1 << 20;

    enum class Action {
        none,         // equal dates, or nothing to copy
        busy,         // the shared copy changed a moment ago: left for later
        pulled,       // the shared copy replaced the local file
        pushed,       // the local file replaced the shared copy
        unavailable,  // the shared copy's disk is not mounted: the local file answers
    };

    struct Rules {
        bool alwaysSync = false;  // ignore the busy rule
        bool pullOnly = false;    // never write the shared copy
        bool mayPull = true;      // false while the local file is open
        // The local file holds no finished build: its date counts as the
        // distant past, so that an empty store never replaces a shared copy.
        bool localIsEmpty = false;
    };

    // The copy decision between two files; a missing file counts as the
    // distant past. Errors are those of the copy.
    static Result<Action> mirrorIfNeeded(const std::string& local, const std::string& remote, const Rules& rules,
                                         FileSystem& fileSystem = FileSystem::real());

    // The same for a cache: resolves its shared copy and renews a stale
    // reference; after a pull reads the cache's document information again.
    // `none` for a cache that is not shared. The local file is not replaced
    // while the cache is open.
    static Result<Action> mirrorIfNeeded(ContentIndex& index, bool alwaysSync, bool pullOnly = false,
                                         FileSystem& fileSystem = FileSystem::real());

    // Puts the shared copy in the place of the local file, whatever their
    // dates: what a cancelled update leaves behind is not kept. Fails,
    // leaving the local file, when the shared copy can't be reached.
    static Status restoreFromRemote(ContentIndex& index, FileSystem& fileSystem = FileSystem::real());

    // Copies `from` over `to` as described above.
    static Status copyFile(const std::string& from, const std::string& to, FileSystem& fileSystem);
};

}  // namespace quester
