#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <string>

namespace quester::testing {

// A chain of folders all named `name`, `depth` deep under `root`, made by
// descriptor since its paths outgrow what one system call takes, with an
// empty file `fileName` at the bottom. Answers the bottom folder's path.
inline std::string makeDeepFolders(const std::string& root, int depth, const std::string& name,
                                   const std::string& fileName) {
    int fd = ::open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    std::string path = root;
    for (int level = 0; level < depth && fd >= 0; ++level) {
        ::mkdirat(fd, name.c_str(), 0755);
        const int below = ::openat(fd, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        ::close(fd);
        fd = below;
        path += "/" + name;
    }
    if (fd >= 0) {
        ::close(::openat(fd, fileName.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
        ::close(fd);
    }
    return path;
}

// Removes such a chain from the top, one level at a time: what lies below the
// top folder moves up before the top goes, so no path ever grows long.
inline void removeDeepFolders(const std::string& root, const std::string& name, const std::string& fileName) {
    const int rootFd = ::open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const std::string lifted = name + ".lifted";
    for (;;) {
        const int top = ::openat(rootFd, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (top < 0) break;
        const bool hasChild = ::renameat(top, name.c_str(), rootFd, lifted.c_str()) == 0;
        ::unlinkat(top, fileName.c_str(), 0);
        ::close(top);
        ::unlinkat(rootFd, name.c_str(), AT_REMOVEDIR);
        if (!hasChild) break;
        ::renameat(rootFd, lifted.c_str(), rootFd, name.c_str());
    }
    ::close(rootFd);
}

}  // namespace quester::testing
