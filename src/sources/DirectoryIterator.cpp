#include "sources/DirectoryIterator.h"

#include <span>

#include "support/LogFunc.h"

namespace quester {
namespace {

// The directory as given, with one trailing "/" dropped; "/" stays itself.
std::string_view directoryPart(std::string_view path) {
    if (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
    return path;
}

// What is put before each name: the directory and a "/", without doubling it for "/".
std::string pathPrefix(std::string_view directory) {
    std::string prefix(directory);
    if (prefix != "/") prefix += '/';
    return prefix;
}

void copyAttributes(const FileStatus& status, FSItemAndAttrs& item) {
    item.attributesRead = true;
    item.fileSize = item.isDirectory ? 0 : status.size;
    item.modifyTime = status.modifyTime;
    item.createTime = status.createTime;
    item.accessTime = status.accessTime;
    item.fileSystem = status.device;
    item.object = status.inode;
}

}  // namespace

DirectoryIterator::DirectoryIterator(FileSystem& fileSystem)
    : fileSystem(fileSystem), attrBuffer(std::make_unique_for_overwrite<std::byte[]>(attrBufferSize)) {}

DirectoryIterator::Listing DirectoryIterator::contentsOfDirectoryAtPath(std::string_view path,
                                                                        const AttributeFilter& wantsAttributes) {
    std::string_view directory = directoryPart(path);
    if (directory.empty()) return {};
    auto opened = fileSystem.openDirectory(std::string(directory));
    if (!opened) {
        LOG("open error: " + opened.error().message);
        Listing failed;
        failed.openError = opened.error();
        return failed;
    }
    return contentsOfDirectory(**opened, directory, wantsAttributes);
}

DirectoryIterator::Listing DirectoryIterator::contentsOfDirectory(DirectoryHandle& handle, std::string_view path,
                                                                  const AttributeFilter& wantsAttributes) {
    Listing listing;
    listing.items.reserve(128);
    // The full path of the entry at hand is built here, in place, so an entry
    // that is turned down costs no allocation.
    std::string fullPath = pathPrefix(directoryPart(path));
    const std::size_t prefixLength = fullPath.size();
    const std::span<std::byte> buffer(attrBuffer.get(), attrBufferSize);
    for (;;) {
        if (Status read = fileSystem.readEntries(handle, buffer, batch); !read) {
            listing.readError = read.error();
            break;
        }
        if (batch.empty()) break;
        for (const DirectoryEntry& entry : batch) {
            if (entry.kind != FileKind::regular && entry.kind != FileKind::directory &&
                entry.kind != FileKind::unknown) {
                continue;
            }
            std::optional<Result<FileStatus>> status;
            bool isDirectory = entry.kind == FileKind::directory;
            if (entry.kind == FileKind::unknown) {
                // The type needs the call anyway; whether the attributes are kept is asked after.
                status = fileSystem.statusAt(handle, entry.name);
                if (!*status || (!(*status)->isRegular() && !(*status)->isDirectory())) continue;
                isDirectory = (*status)->isDirectory();
            }
            fullPath.resize(prefixLength);
            fullPath += entry.name;
            const bool wanted = !wantsAttributes || wantsAttributes(fullPath, isDirectory);
            if (!wanted && !isDirectory) continue;
            if (wanted && readsAttributes && !status) status = fileSystem.statusAt(handle, entry.name);
            if (status && !*status) continue;  // gone since it was listed
            FSItemAndAttrs& item = listing.items.emplace_back();
            item.fullPath = fullPath;
            item.name.assign(fullPath, prefixLength);
            item.isDirectory = isDirectory;
            item.wanted = wanted;
            if (wanted && status) copyAttributes(**status, item);
        }
    }
    return listing;
}

DirectoryIterator::Contents DirectoryIterator::urlContentsOfDirectory(std::string_view path, FileSystem& fileSystem) {
    Contents contents;
    std::string_view directory = directoryPart(path);
    if (directory.empty()) return contents;
    auto opened = fileSystem.openDirectory(std::string(directory));
    if (!opened) return contents;

    auto buffer = std::make_unique_for_overwrite<std::byte[]>(attrBufferSize);
    const std::string prefix = pathPrefix(directory);
    std::vector<DirectoryEntry> entries;
    while (fileSystem.readEntries(**opened, std::span<std::byte>(buffer.get(), attrBufferSize), entries) &&
           !entries.empty()) {
        for (const DirectoryEntry& entry : entries) {
            bool isDirectory = entry.kind == FileKind::directory;
            if (entry.kind == FileKind::unknown) {
                auto status = fileSystem.statusAt(**opened, entry.name);
                if (!status) continue;
                isDirectory = status->isDirectory();
            }
            (isDirectory ? contents.directories : contents.files).push_back(prefix + entry.name);
        }
    }
    return contents;
}

}  // namespace quester
