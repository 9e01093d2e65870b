#pragma once

#include <string>

#include "support/Result.h"

namespace quester {

// Writes `text` to a temporary file beside `path` (making its folder when
// missing), flushes it to the disk and renames it over `path`, so a reader sees
// the old file or the new one whole. On failure the old file stays untouched.
Status replaceFileAtomically(const std::string& path, const std::string& text);

}  // namespace quester
