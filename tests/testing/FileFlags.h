#pragma once

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <string>

namespace quester::testing {

// Sets the "user.xdg.tags" attribute; false where the file system has no user
// attributes, so the test can skip.
inline bool setTags(const std::string& path, const std::string& commaSeparated) {
    return setxattr(path.c_str(), "user.xdg.tags", commaSeparated.data(), commaSeparated.size(), 0) == 0;
}

// Sets or clears the immutable flag; false without the privilege or support.
inline bool setImmutable(const std::string& path, bool immutable) {
    int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK);
    if (fd < 0) return false;
    int flags = 0;
    bool done = ::ioctl(fd, FS_IOC_GETFLAGS, &flags) == 0;
    if (done) {
        flags = immutable ? (flags | FS_IMMUTABLE_FL) : (flags & ~FS_IMMUTABLE_FL);
        done = ::ioctl(fd, FS_IOC_SETFLAGS, &flags) == 0;
    }
    ::close(fd);
    return done;
}

}  // namespace quester::testing
