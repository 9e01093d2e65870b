#include "content/ExtractedFile.h"

namespace quester {

Result<ExtractedFile> ExtractedFile::create(const std::string& target, FileSystem& fileSystem) {
    auto file = fileSystem.createTemporaryFile(target, 0644);
    if (!file) return file.error();
    return ExtractedFile(std::move(*file), target, fileSystem);
}

ExtractedFile::~ExtractedFile() {
    if (!file) return;
    const std::string temporary = file->path();
    file.reset();
    (void)fileSystem->removeFile(temporary);
}

Status ExtractedFile::append(std::string_view bytes) {
    return file->append(bytes);
}

Status ExtractedFile::commit() {
    if (Status closed = file->close(); !closed) return closed;
    if (Status renamed = fileSystem->rename(file->path(), target); !renamed) return renamed;
    file.reset();
    return Status::success();
}

}  // namespace quester
