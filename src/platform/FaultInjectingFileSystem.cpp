#include "platform/FaultInjectingFileSystem.h"

#include <algorithm>

#include "support/PathText.h"

namespace quester {
namespace {

std::string childPath(const std::string& folder, std::string_view name) {
    return folder == "/" ? "/" + std::string(name) : folder + "/" + std::string(name);
}

// A handle of the inner file system, under the path the walk knows it by.
class FaultyDirectory final : public DirectoryHandle {
public:
    explicit FaultyDirectory(std::unique_ptr<DirectoryHandle> inner)
        : DirectoryHandle(inner->path()), inner(std::move(inner)) {}

    const std::unique_ptr<DirectoryHandle> inner;
};

DirectoryHandle& innerOf(DirectoryHandle& directory) {
    return *static_cast<FaultyDirectory&>(directory).inner;
}

}  // namespace

// A file of the inner file system whose writes draw on the shared byte budget.
class FaultyWritableFile final : public WritableFile {
public:
    FaultyWritableFile(std::unique_ptr<WritableFile> inner, FaultInjectingFileSystem& owner)
        : WritableFile(inner->path()), inner(std::move(inner)), owner(owner) {}

    Status append(std::string_view bytes) override {
        if (auto gone = owner.diskFault(path())) return *gone;
        const std::size_t allowed = owner.faults.access([&](FaultInjectingFileSystem::Faults& faults) {
            if (!faults.writableBytes) return bytes.size();
            const std::size_t taken = std::min(bytes.size(), *faults.writableBytes);
            *faults.writableBytes -= taken;
            return taken;
        });
        if (Status written = inner->append(bytes.substr(0, allowed)); !written) return written;
        if (allowed < bytes.size())
            return makeError(ErrorCode::ioError, "cannot write " + path() + ": No space left on device");
        return Status::success();
    }
    Status sync() override {
        if (auto gone = owner.diskFault(path())) return *gone;
        return inner->sync();
    }
    Status close() override { return inner->close(); }

private:
    const std::unique_ptr<WritableFile> inner;
    FaultInjectingFileSystem& owner;
};

void FaultInjectingFileSystem::makeVanish(const std::string& path) {
    faults.access([&](Faults& all) { all.vanished.insert(path); });
}

void FaultInjectingFileSystem::makeUnreadable(const std::string& path) {
    faults.access([&](Faults& all) { all.unreadable.insert(path); });
}

void FaultInjectingFileSystem::breakListing(const std::string& path) {
    faults.access([&](Faults& all) { all.brokenListings.insert(path); });
}

void FaultInjectingFileSystem::failWritesAfter(std::size_t bytes) {
    faults.access([&](Faults& all) { all.writableBytes = bytes; });
}

void FaultInjectingFileSystem::removeDisk(const std::string& mountPoint) {
    faults.access([&](Faults& all) { all.removedDisks.insert(mountPoint); });
}

void FaultInjectingFileSystem::setMountTable(MountTable table) {
    faults.access([&](Faults& all) { all.mountTable = std::move(table); });
}

void FaultInjectingFileSystem::roundModificationTimes(std::int64_t seconds) {
    faults.access([&](Faults& all) { all.timeGranularity = seconds; });
}

std::optional<Error> FaultInjectingFileSystem::diskFault(const std::string& path) const {
    const bool gone = faults.access([&](const Faults& all) {
        return std::any_of(all.removedDisks.begin(), all.removedDisks.end(),
                           [&](const std::string& disk) { return isSameOrBelow(path, disk); });
    });
    if (!gone) return std::nullopt;
    return makeError(ErrorCode::ioError, path + ": No such device");
}

std::optional<Error> FaultInjectingFileSystem::faultFor(const std::string& path, std::set<std::string> Faults::*inSet,
                                                        ErrorCode code) const {
    if (auto gone = diskFault(path)) return gone;
    if (!faults.access([&](const Faults& all) { return (all.*inSet).count(path) > 0; })) return std::nullopt;
    return makeError(code,
                     path + (code == ErrorCode::notFound ? ": No such file or directory" : ": Permission denied"));
}

Result<std::unique_ptr<DirectoryHandle>> FaultInjectingFileSystem::wrapped(
    Result<std::unique_ptr<DirectoryHandle>> opened) {
    if (!opened) return opened.error();
    return std::unique_ptr<DirectoryHandle>(std::make_unique<FaultyDirectory>(std::move(opened).value()));
}

Result<std::unique_ptr<WritableFile>> FaultInjectingFileSystem::wrapped(Result<std::unique_ptr<WritableFile>> opened) {
    if (!opened) return opened.error();
    return std::unique_ptr<WritableFile>(std::make_unique<FaultyWritableFile>(std::move(opened).value(), *this));
}

Result<std::unique_ptr<DirectoryHandle>> FaultInjectingFileSystem::openDirectory(const std::string& path) {
    if (auto fault = faultFor(path, &Faults::unreadable, ErrorCode::permissionDenied)) return *fault;
    if (auto fault = faultFor(path, &Faults::vanished, ErrorCode::notFound)) return *fault;
    return wrapped(inner.openDirectory(path));
}

Result<std::unique_ptr<DirectoryHandle>> FaultInjectingFileSystem::openDirectoryAt(DirectoryHandle& parent,
                                                                                   std::string_view name) {
    const std::string path = childPath(parent.path(), name);
    if (auto fault = faultFor(path, &Faults::unreadable, ErrorCode::permissionDenied)) return *fault;
    if (auto fault = faultFor(path, &Faults::vanished, ErrorCode::notFound)) return *fault;
    return wrapped(inner.openDirectoryAt(innerOf(parent), name));
}

Status FaultInjectingFileSystem::readEntries(DirectoryHandle& directory, std::span<std::byte> buffer,
                                             std::vector<DirectoryEntry>& batch) {
    batch.clear();
    if (auto fault = faultFor(directory.path(), &Faults::brokenListings, ErrorCode::ioError)) {
        return makeError(ErrorCode::ioError, "cannot list " + directory.path() + ": Input/output error");
    }
    return inner.readEntries(innerOf(directory), buffer, batch);
}

Result<FileStatus> FaultInjectingFileSystem::statusAt(DirectoryHandle& directory, const char* name) {
    if (auto fault = faultFor(childPath(directory.path(), name), &Faults::vanished, ErrorCode::notFound)) return *fault;
    return inner.statusAt(innerOf(directory), name);
}

Result<FileStatus> FaultInjectingFileSystem::status(const std::string& path, bool followLinks) {
    if (auto fault = faultFor(path, &Faults::vanished, ErrorCode::notFound)) return *fault;
    return inner.status(path, followLinks);
}

Result<std::string_view> FaultInjectingFileSystem::readFileInto(const std::string& path, std::string& buffer,
                                                                std::size_t maxBytes) {
    if (auto fault = faultFor(path, &Faults::vanished, ErrorCode::notFound)) return *fault;
    if (auto fault = faultFor(path, &Faults::unreadable, ErrorCode::permissionDenied)) return *fault;
    return inner.readFileInto(path, buffer, maxBytes);
}

Result<std::unique_ptr<WritableFile>> FaultInjectingFileSystem::createTemporaryFile(const std::string& path,
                                                                                    std::uint32_t permissions) {
    if (auto gone = diskFault(path)) return *gone;
    return wrapped(inner.createTemporaryFile(path, permissions));
}

Result<std::unique_ptr<WritableFile>> FaultInjectingFileSystem::openForAppending(const std::string& path) {
    if (auto gone = diskFault(path)) return *gone;
    return wrapped(inner.openForAppending(path));
}

Status FaultInjectingFileSystem::rename(const std::string& from, const std::string& to) {
    if (auto gone = diskFault(to)) return *gone;
    return inner.rename(from, to);
}

Status FaultInjectingFileSystem::removeFile(const std::string& path) {
    if (auto gone = diskFault(path)) return *gone;
    return inner.removeFile(path);
}

Status FaultInjectingFileSystem::createDirectories(const std::string& path) {
    if (auto gone = diskFault(path)) return *gone;
    return inner.createDirectories(path);
}

Status FaultInjectingFileSystem::setModificationTime(const std::string& path, FileTime time) {
    if (auto gone = diskFault(path)) return *gone;
    std::int64_t granularity = faults.access([](const Faults& all) { return all.timeGranularity; });
    if (granularity > 0) time = {time.seconds - time.seconds % granularity, 0};
    return inner.setModificationTime(path, time);
}

Result<std::string> FaultInjectingFileSystem::extendedAttribute(const std::string& path, const std::string& name) {
    if (auto fault = faultFor(path, &Faults::vanished, ErrorCode::notFound)) return *fault;
    return inner.extendedAttribute(path, name);
}

Result<std::vector<std::string>> FaultInjectingFileSystem::extendedAttributeNames(const std::string& path) {
    if (auto fault = faultFor(path, &Faults::vanished, ErrorCode::notFound)) return *fault;
    return inner.extendedAttributeNames(path);
}

Status FaultInjectingFileSystem::setExtendedAttribute(const std::string& path, const std::string& name,
                                                      std::string_view value) {
    if (auto fault = faultFor(path, &Faults::vanished, ErrorCode::notFound)) return *fault;
    return inner.setExtendedAttribute(path, name, value);
}

Result<MountTable> FaultInjectingFileSystem::mountTable() {
    auto fake = faults.access([](const Faults& all) { return all.mountTable; });
    if (fake) return std::move(*fake);
    return inner.mountTable();
}

Result<VolumeSpace> FaultInjectingFileSystem::volumeSpace(const std::string& path) {
    if (auto gone = diskFault(path)) return *gone;
    return inner.volumeSpace(path);
}

}  // namespace quester
