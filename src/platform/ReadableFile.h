#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "support/Result.h"

namespace quester {

// A file open for reading, by its descriptor: opened here by path, or adopted
// from a descriptor another process handed over (the import helper reads only
// what it was given). Reads are positional, so one file may be read from
// several places without a shared offset; a file cut short while read gives a
// short read, never a signal. Closed when destroyed. One thread at a time.
class ReadableFile {
public:
    // Opens `path` read-only (following links, never blocking on a FIFO);
    // notFound, permissionDenied or ioError with the system's reason.
    static Result<ReadableFile> open(const std::string& path);
    // Takes ownership of an open descriptor; `path` names it for messages and
    // for its extension.
    static ReadableFile adopt(int descriptor, std::string path);

    ReadableFile(ReadableFile&& other) noexcept;
    ReadableFile& operator=(ReadableFile&& other) noexcept;
    ReadableFile(const ReadableFile&) = delete;
    ReadableFile& operator=(const ReadableFile&) = delete;
    ~ReadableFile();

    const std::string& path() const { return filePath; }
    int descriptor() const { return fd; }
    // The size now; ioError when the descriptor can't be statted.
    Result<std::uint64_t> size() const;
    // Reads up to `into.size()` bytes at `offset`; fewer only at the end of
    // the file. 0 at or past the end.
    Result<std::size_t> readAt(std::uint64_t offset, std::span<char> into) const;
    // The whole file; invalidArgument when it holds more than `maxBytes`.
    Result<std::string> readAll(std::uint64_t maxBytes) const;
    // Tells the kernel that the pages read so far need not stay cached, so a
    // big file read once doesn't push other data out of memory.
    void dropCachedPages() const;

private:
    ReadableFile(int descriptor, std::string path) : fd(descriptor), filePath(std::move(path)) {}

    int fd = -1;
    std::string filePath;
};

}  // namespace quester
