#pragma once

#include <cstdint>
#include <string>

#include "platform/FileSystem.h"
#include "support/Result.h"

namespace quester {

// What to do when the folder of the file to write isn't there.
enum class MissingFolder { make, fail };

// Whether the new file reaches the disk before it replaces the old one. A
// flush costs milliseconds; a file whose loss in a power cut does no harm (a
// statistic, a marker that only a crash of this program must leave behind)
// is written without.
enum class Flush { toDisk, byTheSystem };

// Writes `text` to a temporary file beside `path`, flushes it to the disk
// (unless told not to) and renames it over `path`, so a reader sees the old
// file or the new one whole. On failure the old file stays untouched and the
// temporary file is removed: no half-written file is left behind. The new
// file gets `permissions`.
Status replaceFileAtomically(const std::string& path, const std::string& text,
                             FileSystem& fileSystem = FileSystem::real(), std::uint32_t permissions = 0600,
                             MissingFolder missingFolder = MissingFolder::make, Flush flush = Flush::toDisk);

}  // namespace quester
