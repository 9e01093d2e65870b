#pragma once

#include <string>

#include "platform/FileSystem.h"

namespace quester {

// Whether the file at `path` is a program the system runs: a regular file
// with an execute permission whose first bytes are an ELF header or a "#!"
// line. The name plays no part. Read through `fileSystem`; a file that can't
// be read is no program.
bool isExecutableFile(const std::string& path, FileSystem& fileSystem = FileSystem::real());

}  // namespace quester
