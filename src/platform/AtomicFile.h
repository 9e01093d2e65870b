#pragma once

#include <cstdint>
#include <string>

#include "platform/FileSystem.h"
#include "support/Result.h"

namespace quester {

// What to do when the folder of the file to write isn't there.
enum class MissingFolder { make, fail };

// Writes `text` to a temporary file beside `path`, flushes it to the disk and
// renames it over `path`, so a reader sees the old file or the new one whole.
// On failure the old file stays untouched and the temporary file is removed:
// no half-written file is left behind. The new file gets `permissions`.
Status replaceFileAtomically(const std::string& path, const std::string& text,
                             FileSystem& fileSystem = FileSystem::real(), std::uint32_t permissions = 0600,
                             MissingFolder missingFolder = MissingFolder::make);

}  // namespace quester
