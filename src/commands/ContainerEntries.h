#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "content/ContentProgress.h"

namespace quester {

// The members of a zip or tar file as content search reads them: the flat
// list of what isn't a folder, and one member written out to a file. Holds no
// state; every function is re-entrant.
class ContainerEntries {
public:
    enum class Kind { zip, tar };

    struct FlatEntry {
        std::string path;
        std::uint64_t size = 0;
        std::int64_t modified = 0;  // seconds since 1970
    };

    // The archive's entries in list order without its folders; empty when the
    // file can't be read or holds no entries.
    static std::vector<FlatEntry> files(const std::string& archivePath, Kind kind);
    // Writes the entry at `entryPath` to `target`; why it failed, as text for
    // the log, or none on success.
    static std::optional<std::string> extract(const std::string& archivePath, Kind kind, const std::string& entryPath,
                                              const std::string& target, const ContentProgress& progress);
};

}  // namespace quester
