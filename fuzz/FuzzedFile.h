#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "platform/ReadableFile.h"

namespace quester {

// The input as a file that never touches the disk: a memory file of its own,
// read through the descriptor as the import helper reads a handed-over file.
inline ReadableFile fuzzedFile(const std::uint8_t* data, std::size_t size) {
    int fd = memfd_create("fuzzed", MFD_CLOEXEC);
    if (fd < 0) std::abort();
    if (size > 0 && pwrite(fd, data, size, 0) != static_cast<ssize_t>(size)) std::abort();
    return ReadableFile::adopt(fd, "fuzzed");
}

}  // namespace quester
