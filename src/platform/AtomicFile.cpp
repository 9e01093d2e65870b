#include "platform/AtomicFile.h"

#include "support/PathText.h"

namespace quester {

namespace {

Status writeAndClose(WritableFile& file, const std::string& text, Flush flush) {
    Status written = file.append(text);
    if (written && flush == Flush::toDisk) written = file.sync();
    Status closed = file.close();
    return written ? closed : written;
}

}  // namespace

Status replaceFileAtomically(const std::string& path, const std::string& text, FileSystem& fileSystem,
                             std::uint32_t permissions, MissingFolder missingFolder, Flush flush) {
    const std::string folder = parentPath(path);
    if (!folder.empty() && missingFolder == MissingFolder::make) {
        if (Status made = fileSystem.createDirectories(folder); !made) return made;
    }
    auto temporary = fileSystem.createTemporaryFile(path, permissions);
    if (!temporary) return temporary.error();
    const std::string temporaryPath = (*temporary)->path();
    Status written = writeAndClose(**temporary, text, flush);
    if (written) written = fileSystem.rename(temporaryPath, path);
    if (!written) (void)fileSystem.removeFile(temporaryPath);
    return written;
}

}  // namespace quester
