#include "support/AtomicFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "support/AppDirectories.h"

namespace quester {

namespace {

std::string directoryOf(const std::string& path) {
    auto slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? std::string("/") : path.substr(0, slash);
}

Error ioFailure(const std::string& what, const std::string& path) {
    return makeError(ErrorCode::ioError, what + " " + path + ": " + std::strerror(errno));
}

Status writeFully(int fd, const std::string& text, const std::string& path) {
    for (std::size_t written = 0; written < text.size();) {
        ssize_t count = write(fd, text.data() + written, text.size() - written);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return ioFailure("cannot write", path);
        written += static_cast<std::size_t>(count);
    }
    return Status::success();
}

}  // namespace

Status replaceFileAtomically(const std::string& path, const std::string& text) {
    if (Status made = createDirectoryWithParents(directoryOf(path)); !made) return made;
    std::string temporary = path + ".XXXXXX";
    int fd = mkostemp(temporary.data(), O_CLOEXEC);
    if (fd < 0) return ioFailure("cannot create a temporary file for", path);
    Status written = writeFully(fd, text, temporary);
    if (written && fsync(fd) != 0) written = ioFailure("cannot flush", temporary);
    if (close(fd) != 0 && written) written = ioFailure("cannot close", temporary);
    if (written && rename(temporary.c_str(), path.c_str()) != 0) written = ioFailure("cannot rename over", path);
    if (!written) unlink(temporary.c_str());
    return written;
}

}  // namespace quester
