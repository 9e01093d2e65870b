#pragma once

#include <string>
#include <vector>

#include "support/Result.h"

namespace quester {

// Shuts the calling process off from the file system for good: afterwards it
// may only read below `readablePaths` (its libraries and their data), write
// nowhere, and use what it already holds open or is handed later. Built on
// Landlock; `unsupported` when the kernel has none, and then nothing changes.
// Applies to every thread of the process that starts afterwards and to the
// calling thread; call it before starting any other thread.
class ProcessSandbox {
public:
    static Status restrictToReading(const std::vector<std::string>& readablePaths);
};

}  // namespace quester
