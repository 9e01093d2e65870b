#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "support/Result.h"

namespace quester {

// An archive or database file on disk, as the container searchers reach it.
//
// Archives are read whole into memory through positional reads rather than
// mapped: a file on a network or removable disk that is cut short or goes
// away while mapped would kill the process with SIGBUS, while a read just
// comes back short. The cap bounds what a search may allocate.
class ArchiveFile {
public:
    // The largest archive that is read.
    static constexpr std::uint64_t maxBytes = std::uint64_t{2} << 30;

    // The whole file; invalidArgument when it is larger than `maxBytes`, and
    // the reader's error when it can't be opened or read.
    static Result<std::string> read(const std::string& path);
    // The first `count` bytes, fewer when the file is shorter.
    static Result<std::string> readPrefix(const std::string& path, std::size_t count);
    // Whether the file's type, by the program's type table, conforms to
    // `type`; when the table doesn't know `type`, whether the lowercased
    // extension is `extension`.
    static bool conformsTo(const std::string& path, std::string_view type, std::string_view extension);
    // The last path component, lowercased in ASCII, after its last dot.
    static std::string lowercasedExtension(std::string_view path);
};

}  // namespace quester
