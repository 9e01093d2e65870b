#pragma once

#include <compare>
#include <condition_variable>
#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/FileSystem.h"
#include "sources/FSItemAndAttrs.h"

namespace quester {

// Lists the folders of a cache's target for its build, on a thread of its own
// ahead of the build: while the build writes one folder's records, the next
// folders are read from the disk. A folder named by `prefetch` is listed in
// the background, the latest first (the build walks its folders as a stack);
// `list` hands over that listing, or lists on the caller's thread what was
// not asked for ahead.
//
// A listing keeps regular files and folders with names that a cache can
// record, and leaves out folders of other disks and of other systems. Files
// are statted only when asked: an unchanged folder keeps its files' records.
class FolderLister {
public:
    using Listing = std::vector<FSItemAndAttrs>;

    // Listings made ahead and not yet taken; the thread waits beyond this.
    static constexpr std::size_t mostAhead = 64;

    FolderLister(FileSystem& fileSystem, FileSystemId rootDevice);
    ~FolderLister();
    FolderLister(const FolderLister&) = delete;
    FolderLister& operator=(const FolderLister&) = delete;

    void prefetch(const std::string& path, bool withFileAttributes);
    Listing list(const std::string& path, bool withFileAttributes);

private:
    struct Request {
        std::string path;
        bool withFileAttributes = false;
        auto operator<=>(const Request&) const = default;
    };
    // One thread's buffers for reading a folder.
    struct Reader {
        std::unique_ptr<std::byte[]> buffer;
        std::vector<DirectoryEntry> batch;
        Reader();
    };

    Listing read(Reader& reader, const Request& request);
    std::optional<Listing> takeFetched(const Request& request);
    void run();

    FileSystem& fileSystem;
    FileSystemId rootDevice;
    Reader callerReader;
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<Request> pending;
    std::optional<Request> inProgress;
    std::map<Request, Listing> fetched;
    bool stopping = false;
    std::thread worker;
};

}  // namespace quester
