#include "cache/CacheMirror.h"

#include <chrono>
#include <cmath>
#include <optional>
#include <vector>

#include "cache/ContentIndex.h"
#include "platform/ReadableFile.h"
#include "support/LogFunc.h"

namespace quester {

namespace {

double secondsOf(const FileTime& time) {
    return static_cast<double>(time.seconds) + static_cast<double>(time.nanoseconds) / 1e9;
}

double unixNow() {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

// The content modification date; none for a file that can't be reached.
std::optional<FileTime> dateOf(FileSystem& fileSystem, const std::string& path) {
    Result<FileStatus> status = fileSystem.status(path);
    if (!status || !status->isRegular()) return std::nullopt;
    return status->modifyTime;
}

// A file system that keeps whole seconds (or rounds to two, as FAT does)
// gives dates without a fraction; only then are near dates taken as equal,
// since elsewhere a second update soon after a copy must still count.
bool sameDate(std::optional<FileTime> one, std::optional<FileTime> other) {
    if (!one || !other) return one.has_value() == other.has_value();
    if (*one == *other) return true;
    bool rounded = one->nanoseconds == 0 || other->nanoseconds == 0;
    return rounded && std::fabs(secondsOf(*one) - secondsOf(*other)) <= CacheMirror::dateTolerance;
}

bool isNewer(const FileTime& one, const FileTime& other) {
    return one.seconds != other.seconds ? one.seconds > other.seconds : one.nanoseconds > other.nanoseconds;
}

Status copyBytes(const ReadableFile& input, WritableFile& output, std::uint64_t expectedSize) {
    std::vector<char> chunk(CacheMirror::copyChunk);
    std::uint64_t offset = 0;
    for (;;) {
        Result<std::size_t> read = input.readAt(offset, chunk);
        if (!read) return read.error();
        if (*read == 0) break;
        if (Status written = output.append(std::string_view(chunk.data(), *read)); !written) return written;
        offset += *read;
    }
    input.dropCachedPages();
    if (offset != expectedSize)
        return makeError(ErrorCode::ioError, input.path() + " changed size while it was copied");
    if (Status synced = output.sync(); !synced) return synced;
    return output.close();
}

Status checkKeptDate(FileSystem& fileSystem, const std::string& path, const FileTime& wanted) {
    if (sameDate(dateOf(fileSystem, path), wanted)) return Status::success();
    return makeError(ErrorCode::ioError, "the file system of " + path + " did not keep the copy's date");
}

Status copyInto(const std::string& from, const FileStatus& source, const std::string& temporary, WritableFile& output,
                FileSystem& fileSystem) {
    Result<ReadableFile> input = ReadableFile::open(from);
    if (!input) return input.error();
    if (Status copied = copyBytes(*input, output, source.size); !copied) return copied;
    if (Status dated = fileSystem.setModificationTime(temporary, source.modifyTime); !dated) return dated;
    if (Status kept = checkKeptDate(fileSystem, temporary, source.modifyTime); !kept) return kept;
    Result<FileStatus> after = fileSystem.status(from);
    if (!after || after->modifyTime != source.modifyTime || after->size != source.size)
        return makeError(ErrorCode::ioError, from + " changed while it was copied");
    return Status::success();
}

}  // namespace

Status CacheMirror::copyFile(const std::string& from, const std::string& to, FileSystem& fileSystem) {
    Result<FileStatus> source = fileSystem.status(from);
    if (!source) return source.error();
    Result<std::unique_ptr<WritableFile>> output = fileSystem.createTemporaryFile(to, source->permissions & 0666);
    if (!output) return output.error();
    const std::string temporary = (*output)->path();
    Status copied = copyInto(from, *source, temporary, **output, fileSystem);
    output->reset();
    if (copied) copied = fileSystem.rename(temporary, to);
    if (!copied) (void)fileSystem.removeFile(temporary);
    return copied;
}

Result<CacheMirror::Action> CacheMirror::mirrorIfNeeded(const std::string& local, const std::string& remote,
                                                        const Rules& rules, FileSystem& fileSystem) {
    std::optional<FileTime> localDate = rules.localIsEmpty ? std::nullopt : dateOf(fileSystem, local);
    std::optional<FileTime> remoteDate = dateOf(fileSystem, remote);
    if (!rules.alwaysSync && remoteDate && std::fabs(unixNow() - secondsOf(*remoteDate)) < busySeconds) {
        LOG("DB file appears busy: " + remote);
        return Action::busy;
    }
    if (sameDate(localDate, remoteDate)) {
        LOG("Mirror: no sync required.");
        return Action::none;
    }
    bool remoteIsNewer = !localDate || (remoteDate && isNewer(*remoteDate, *localDate));
    if (remoteIsNewer) {
        if (!rules.mayPull) return Action::none;
        LOG("Mirror: Remote " + remote + " to Local " + local);
        if (Status copied = copyFile(remote, local, fileSystem); !copied) return copied.error();
        return Action::pulled;
    }
    if (rules.pullOnly) return Action::none;
    LOG("Mirror: Local " + local + " to remote " + remote);
    if (Status copied = copyFile(local, remote, fileSystem); !copied) return copied.error();
    return Action::pushed;
}

namespace {

// The shared copy's path now; a stale reference is made again.
std::optional<std::string> resolveRemoteDBBookmark(ContentIndex& index) {
    std::optional<Bookmark> bookmark = index.remoteDBBookmark();
    if (!bookmark) return std::nullopt;
    Result<Bookmark::Resolved> resolved = bookmark->resolve();
    if (!resolved) {
        LOG("Failed to resolve remote DB bookmark: " + resolved.error().message);
        return std::nullopt;
    }
    if (resolved->isStale)
        if (Result<Bookmark> renewed = Bookmark::make(resolved->path)) index.setRemoteDBBookmark(*renewed);
    return resolved->path;
}

}  // namespace

Result<CacheMirror::Action> CacheMirror::mirrorIfNeeded(ContentIndex& index, bool alwaysSync, bool pullOnly,
                                                        FileSystem& fileSystem) {
    if (!index.remoteDBBookmark()) return Action::none;
    std::optional<std::string> remote = resolveRemoteDBBookmark(index);
    if (!remote) return Action::unavailable;
    Rules rules;
    rules.alwaysSync = alwaysSync;
    // A cache adopted from elsewhere has no target here: its owner updates it.
    rules.pullOnly = pullOnly || !index.targetURL();
    rules.mayPull = !index.isOpen();
    rules.localIsEmpty = !index.documentInfo().numberOfFSItems;
    Result<Action> action = mirrorIfNeeded(index.localDBFile(), *remote, rules, fileSystem);
    if (!action) {
        LOG("Mirror Error: " + action.error().description());
        return action;
    }
    if (*action == Action::pulled)
        if (Status loaded = index.loadDocumentInfo(); !loaded) return loaded.error();
    return action;
}

Status CacheMirror::restoreFromRemote(ContentIndex& index, FileSystem& fileSystem) {
    std::optional<std::string> remote = resolveRemoteDBBookmark(index);
    if (!remote) return makeError(ErrorCode::notFound, "the shared copy of " + index.displayName() + " is unavailable");
    if (index.isOpen()) return makeError(ErrorCode::invalidArgument, index.displayName() + " is open");
    if (Status copied = copyFile(*remote, index.localDBFile(), fileSystem); !copied) return copied;
    return index.loadDocumentInfo();
}

}  // namespace quester
