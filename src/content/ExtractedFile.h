#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/FileSystem.h"
#include "support/Result.h"

namespace quester {

// The target of one extraction: written under a temporary name beside the
// target and renamed over it only when complete, so a failed or cancelled
// extraction leaves no partial file behind (the temporary one is removed when
// this is destroyed uncommitted). Movable; one thread at a time.
class ExtractedFile {
public:
    // Starts a file that will become `target`, with mode 0644.
    static Result<ExtractedFile> create(const std::string& target, FileSystem& fileSystem);

    ExtractedFile(ExtractedFile&&) noexcept = default;
    ExtractedFile& operator=(ExtractedFile&&) = delete;
    ~ExtractedFile();

    Status append(std::string_view bytes);
    // Closes the file and puts it in the target's place.
    Status commit();

private:
    ExtractedFile(std::unique_ptr<WritableFile> file, std::string target, FileSystem& fileSystem)
        : file(std::move(file)), target(std::move(target)), fileSystem(&fileSystem) {}

    std::unique_ptr<WritableFile> file;
    std::string target;
    FileSystem* fileSystem;
};

}  // namespace quester
