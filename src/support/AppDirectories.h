#pragma once

#include <string>

#include "support/Result.h"

namespace quester {

// The per-user folders the program keeps its files in, after the XDG base
// directory rules:
//
//   config   $XDG_CONFIG_HOME/quester   (default ~/.config/quester)   preferences
//   caches   $XDG_CACHE_HOME/quester    (default ~/.cache/quester)    logs, what can be rebuilt
//   data     $XDG_DATA_HOME/quester     (default ~/.local/share/quester)  qscache files, statistics, keys
//   scripts  <data>/scripts
//
// With QUESTER_HOME set, the three live under it as QUESTER_HOME/config,
// QUESTER_HOME/cache and QUESTER_HOME/data, which is how tests keep to a temp
// folder. An XDG variable that is empty or not an absolute path is ignored.
//
// Every accessor reads the environment anew, creates the folder with its
// parents when missing, and fails with the reason when it can't. All
// operations are thread-safe.
class AppDirectories {
public:
    static Result<std::string> configDirectory();
    static Result<std::string> appCachesDirectory();
    static Result<std::string> applicationSupportDirectory();
    // Remembered after the first successful call for the data directory in
    // effect at that time.
    static Result<std::string> applicationScriptsDirectory();

    // The config and data folders' paths, without making them: a reader finds
    // nothing where there is no folder, and a writer makes it when it has
    // something to store, so that a run that stores nothing leaves no trace.
    static Result<std::string> configDirectoryPath();
    static Result<std::string> applicationSupportDirectoryPath();

    // The user's home folder: $HOME when it holds an absolute path, else the
    // password database's entry for the real user; empty when neither can be had.
    static std::string homeDirectory();

    // Removes a file or a whole folder. True on success; false when nothing
    // was there or the removal failed (the error is swallowed).
    static bool removeItem_NoThrow(const std::string& path);
};

// Creates `path` and its parents when missing; fails when it can't or when
// something that is not a folder stands there.
Status createDirectoryWithParents(const std::string& path);

}  // namespace quester
