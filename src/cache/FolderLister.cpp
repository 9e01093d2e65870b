#include "cache/FolderLister.h"

#include <algorithm>

#include "sources/DirectoryIterator.h"
#include "support/LogFunc.h"

namespace quester {

namespace {

// A name with a carriage return, a line feed or a colon is not recorded.
bool usableName(std::string_view name) {
    return name.find_first_of("\r\n:") == std::string_view::npos;
}

// Folders of other systems that a cache never enters.
bool isExcludedFolder(const std::string& path) {
    std::string asFolder = path + "/";
    return asFolder == "/Volumes/" || path.starts_with("/System") || asFolder.find("/Windows/") != std::string::npos ||
           asFolder.find("/Windows.old/") != std::string::npos;
}

}  // namespace

FolderLister::Reader::Reader()
    : buffer(std::make_unique_for_overwrite<std::byte[]>(DirectoryIterator::attrBufferSize)) {}

FolderLister::FolderLister(FileSystem& fileSystem, FileSystemId rootDevice)
    : fileSystem(fileSystem), rootDevice(rootDevice), worker([this] { run(); }) {}

FolderLister::~FolderLister() {
    {
        std::lock_guard<std::mutex> lock(mutex);
        stopping = true;
    }
    changed.notify_all();
    worker.join();
}

void FolderLister::prefetch(const std::string& path, bool withFileAttributes) {
    {
        std::lock_guard<std::mutex> lock(mutex);
        pending.push_back({path, withFileAttributes});
    }
    changed.notify_all();
}

FolderLister::Listing FolderLister::list(const std::string& path, bool withFileAttributes) {
    Request request{path, withFileAttributes};
    if (std::optional<Listing> listing = takeFetched(request)) return std::move(*listing);
    return read(callerReader, request);
}

// The listing made ahead, waiting for it while the thread is on it. A request
// still waiting its turn is withdrawn: the caller lists it at once.
std::optional<FolderLister::Listing> FolderLister::takeFetched(const Request& request) {
    std::unique_lock<std::mutex> lock(mutex);
    changed.wait(lock, [&] { return inProgress != request; });
    if (auto found = fetched.find(request); found != fetched.end()) {
        Listing listing = std::move(found->second);
        fetched.erase(found);
        lock.unlock();
        changed.notify_all();
        return listing;
    }
    if (auto waiting = std::find(pending.rbegin(), pending.rend(), request); waiting != pending.rend())
        pending.erase(std::next(waiting).base());
    return std::nullopt;
}

void FolderLister::run() {
    Reader reader;
    std::unique_lock<std::mutex> lock(mutex);
    while (true) {
        changed.wait(lock, [&] { return stopping || (!pending.empty() && fetched.size() < mostAhead); });
        if (stopping) return;
        inProgress = std::move(pending.back());
        pending.pop_back();
        lock.unlock();
        Listing listing = read(reader, *inProgress);
        lock.lock();
        fetched.insert_or_assign(*inProgress, std::move(listing));
        inProgress.reset();
        changed.notify_all();
    }
}

FolderLister::Listing FolderLister::read(Reader& reader, const Request& request) {
    Listing kept;
    auto handle = fileSystem.openDirectory(request.path);
    if (!handle) {
        LOG("cannot list " + request.path + ": " + handle.error().message);
        return kept;
    }
    std::string prefix = request.path == "/" ? request.path : request.path + "/";
    std::span<std::byte> buffer(reader.buffer.get(), DirectoryIterator::attrBufferSize);
    while (fileSystem.readEntries(**handle, buffer, reader.batch) && !reader.batch.empty()) {
        for (const DirectoryEntry& entry : reader.batch) {
            if (entry.kind != FileKind::regular && entry.kind != FileKind::directory && entry.kind != FileKind::unknown)
                continue;
            if (!usableName(entry.name)) continue;
            bool wanted = entry.kind != FileKind::regular || request.withFileAttributes;
            std::optional<FileStatus> status;
            if (wanted) {
                Result<FileStatus> got = fileSystem.statusAt(**handle, entry.name);
                if (!got || (!got->isDirectory() && !got->isRegular())) continue;
                status = *got;
            }
            FSItemAndAttrs item;
            item.name = entry.name;
            item.fullPath = prefix + item.name;
            item.isDirectory = status ? status->isDirectory() : false;
            if (item.isDirectory && (isExcludedFolder(item.fullPath) || status->device != rootDevice)) continue;
            if (status) {
                item.attributesRead = true;
                item.fileSize = item.isDirectory ? 0 : status->size;
                item.modifyTime = status->modifyTime;
                item.createTime = status->createTime;
            }
            kept.push_back(std::move(item));
        }
    }
    return kept;
}

}  // namespace quester
