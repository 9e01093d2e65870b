#include "cache/CacheFileCheck.h"

#include <cstdint>
#include <cstring>
#include <functional>
#include <map>
#include <set>
#include <span>

#include <fmt/format.h>

#include "platform/AtomicFile.h"
#include "platform/FileSystem.h"
#include "platform/ReadableFile.h"
#include "support/Locked.h"

namespace quester {

namespace {

// The on-disk layout of LMDB 0.9 on a 64-bit machine.
constexpr std::size_t pageHeaderSize = 16;  // pgno 8, pad 2, flags 2, lower 2, upper 2
constexpr std::size_t nodeHeaderSize = 8;   // lo 2, hi 2, flags 2, ksize 2
constexpr std::size_t databaseRecordSize = 48;
constexpr std::size_t metaOffset = pageHeaderSize;
constexpr std::size_t metaDatabasesOffset = metaOffset + 24;  // magic 4, version 4, address 8, mapsize 8
constexpr std::size_t metaLastPageOffset = metaDatabasesOffset + 2 * databaseRecordSize;
constexpr std::size_t metaTransactionOffset = metaLastPageOffset + 8;
constexpr std::uint32_t magic = 0xBEEFC0DE;
constexpr std::uint32_t dataVersion = 1;
constexpr std::uint16_t branchPage = 0x01, leafPage = 0x02, overflowPage = 0x04, metaPage = 0x08;
constexpr std::uint16_t bigData = 0x01, subDatabase = 0x02, duplicates = 0x04;
constexpr std::uint64_t noPage = ~std::uint64_t{0};
constexpr int deepestTree = 32;

template <typename T>
T readAt(std::string_view bytes, std::size_t offset) {
    T value{};
    std::memcpy(&value, bytes.data() + offset, sizeof(T));
    return value;
}

struct Tree {
    std::uint64_t root = noPage;
    bool isFreeList = false;
};

// Bytes of the file at an offset; fewer than asked (or none) past its end.
using RangeReader = std::function<std::string(std::uint64_t offset, std::size_t length)>;

class Walker {
public:
    Walker(RangeReader read, std::uint64_t pageSize, std::uint64_t lastPage)
        : read(std::move(read)), pageSize(pageSize), lastPage(lastPage) {}

    Status walk(Tree tree) {
        if (tree.root == noPage) return Status::success();
        return visit(tree.root, tree.isFreeList, 0);
    }

private:
    static Status fault(const std::string& what) {
        return makeError(ErrorCode::corrupt, "the cache file is damaged: " + what);
    }

    std::string page(std::uint64_t number) const {
        std::string bytes = read(number * pageSize, pageSize);
        bytes.resize(pageSize);
        return bytes;
    }

    Status claim(std::uint64_t number, std::uint64_t count = 1) {
        if (number < 2 || number > lastPage || count == 0 || count > lastPage - number + 1)
            return fault(fmt::format("page {} lies outside the file", number));
        for (std::uint64_t i = 0; i < count; ++i)
            if (!seen.insert(number + i).second) return fault(fmt::format("page {} is reached twice", number + i));
        return Status::success();
    }

    Status visit(std::uint64_t number, bool isFreeList, int depth) {
        if (depth > deepestTree) return fault("a tree is too deep");
        if (Status claimed = claim(number); !claimed) return claimed;
        std::string bytes = page(number);
        std::uint16_t flags = readAt<std::uint16_t>(bytes, 10);
        std::uint16_t lower = readAt<std::uint16_t>(bytes, 12);
        std::uint16_t upper = readAt<std::uint16_t>(bytes, 14);
        if (readAt<std::uint64_t>(bytes, 0) != number) return fault(fmt::format("page {} names another place", number));
        if (flags != branchPage && flags != leafPage) return fault(fmt::format("page {} is no tree page", number));
        if (lower < pageHeaderSize || lower > upper || upper > pageSize || (lower - pageHeaderSize) % 2 != 0)
            return fault(fmt::format("page {} has a bad node table", number));
        std::size_t nodes = (lower - pageHeaderSize) / 2;
        if (nodes == 0 && flags == branchPage) return fault(fmt::format("branch page {} is empty", number));
        for (std::size_t i = 0; i < nodes; ++i) {
            std::uint16_t offset = readAt<std::uint16_t>(bytes, pageHeaderSize + 2 * i);
            Status checked =
                flags == branchPage ? branch(bytes, offset, isFreeList, depth) : leaf(bytes, offset, isFreeList);
            if (!checked) return checked;
        }
        return Status::success();
    }

    Status nodeFits(std::string_view bytes, std::uint16_t offset, std::size_t tail) const {
        std::uint16_t keySize = offset + nodeHeaderSize <= pageSize ? readAt<std::uint16_t>(bytes, offset + 6) : 0;
        if (offset < pageHeaderSize || offset + nodeHeaderSize + keySize + tail > pageSize)
            return fault("a node runs past its page");
        return Status::success();
    }

    Status branch(std::string_view bytes, std::uint16_t offset, bool isFreeList, int depth) {
        if (Status fits = nodeFits(bytes, offset, 0); !fits) return fits;
        std::uint64_t child = std::uint64_t{readAt<std::uint16_t>(bytes, offset)} |
                              std::uint64_t{readAt<std::uint16_t>(bytes, offset + 2)} << 16 |
                              std::uint64_t{readAt<std::uint16_t>(bytes, offset + 4)} << 32;
        return visit(child, isFreeList, depth + 1);
    }

    Status leaf(std::string_view bytes, std::uint16_t offset, bool isFreeList) {
        if (Status fits = nodeFits(bytes, offset, 0); !fits) return fits;
        std::uint64_t dataSize = std::uint64_t{readAt<std::uint16_t>(bytes, offset)} |
                                 std::uint64_t{readAt<std::uint16_t>(bytes, offset + 2)} << 16;
        std::uint16_t flags = readAt<std::uint16_t>(bytes, offset + 4);
        std::size_t dataOffset = offset + nodeHeaderSize + readAt<std::uint16_t>(bytes, offset + 6);
        if (flags & ~(bigData | subDatabase) || (flags & duplicates)) return fault("a record has unknown flags");
        if (flags & bigData) return overflow(bytes, offset, dataOffset, dataSize, isFreeList);
        if (Status fits = nodeFits(bytes, offset, dataSize); !fits) return fits;
        std::string_view data = bytes.substr(dataOffset, dataSize);
        if (isFreeList) return freeList(data);
        if (flags & subDatabase) return subTree(data);
        return Status::success();
    }

    Status overflow(std::string_view bytes, std::uint16_t offset, std::size_t dataOffset, std::uint64_t dataSize,
                    bool isFreeList) {
        if (Status fits = nodeFits(bytes, offset, 8); !fits) return fits;
        std::uint64_t first = readAt<std::uint64_t>(bytes, dataOffset);
        if (first < 2 || first > lastPage) return fault("a value names a page outside the file");
        std::string head = page(first);
        std::uint32_t count = readAt<std::uint32_t>(head, 12);
        if (readAt<std::uint64_t>(head, 0) != first || readAt<std::uint16_t>(head, 10) != overflowPage)
            return fault(fmt::format("page {} is no overflow page", first));
        if (Status claimed = claim(first, count); !claimed) return claimed;
        if (dataSize > count * pageSize - pageHeaderSize) return fault("a value is longer than its pages");
        if (isFreeList) return freeList(read(first * pageSize + pageHeaderSize, dataSize));
        return Status::success();
    }

    // A list of free pages: a count, then that many page numbers.
    Status freeList(std::string_view data) const {
        if (data.size() < 8) return fault("a free-page list is cut short");
        std::uint64_t count = readAt<std::uint64_t>(data, 0);
        if (count > data.size() / 8 - 1) return fault("a free-page list is longer than its value");
        for (std::uint64_t i = 1; i <= count; ++i)
            if (readAt<std::uint64_t>(data, i * 8) > lastPage) return fault("a free page lies outside the file");
        return Status::success();
    }

    Status subTree(std::string_view record) {
        if (record.size() != databaseRecordSize) return fault("a database record has the wrong size");
        return walk({readAt<std::uint64_t>(record, 40), false});
    }

    RangeReader read;
    std::uint64_t pageSize;
    std::uint64_t lastPage;
    std::set<std::uint64_t> seen;
};

}  // namespace

namespace {

Status checkFile(const RangeReader& read, std::uint64_t fileSize) {
    if (fileSize == 0) return Status::success();
    auto fault = [](const std::string& what) {
        return makeError(ErrorCode::corrupt, "the cache file is damaged: " + what);
    };
    if (fileSize < metaTransactionOffset + 8) return fault("it is shorter than its header");
    std::string first = read(0, metaTransactionOffset + 8);
    std::uint64_t pageSize = readAt<std::uint32_t>(first, metaDatabasesOffset);
    if (pageSize < 512 || pageSize > 65536 || (pageSize & (pageSize - 1)) != 0)
        return fault("its page size is no power of two");
    if (fileSize < 2 * pageSize) return fault("it is shorter than its two headers");
    std::string headers[2] = {read(0, pageSize), read(pageSize, pageSize)};
    std::size_t newest = 0;
    for (std::size_t meta = 0; meta < 2; ++meta) {
        const std::string& header = headers[meta];
        if (header.size() != pageSize || readAt<std::uint16_t>(header, 10) != metaPage ||
            readAt<std::uint32_t>(header, metaOffset) != magic ||
            readAt<std::uint32_t>(header, metaOffset + 4) != dataVersion)
            return fault("a header is not of this kind of file");
        // LMDB takes the page size of the newer header and finds the other by it.
        if (readAt<std::uint32_t>(header, metaDatabasesOffset) != pageSize)
            return fault("its headers state different page sizes");
        if (readAt<std::uint64_t>(header, metaTransactionOffset) >
            readAt<std::uint64_t>(headers[newest], metaTransactionOffset))
            newest = meta;
    }
    const std::string& header = headers[newest];
    std::uint64_t lastPage = readAt<std::uint64_t>(header, metaLastPageOffset);
    if (lastPage < 1 || lastPage >= fileSize / pageSize)
        return fault(fmt::format("its header names page {} but it holds {} bytes", lastPage, fileSize));
    Walker walker(read, pageSize, lastPage);
    auto rootOf = [&](std::size_t database) {
        return readAt<std::uint64_t>(header, metaDatabasesOffset + database * databaseRecordSize + 40);
    };
    if (Status free = walker.walk({rootOf(0), true}); !free) return free;
    return walker.walk({rootOf(1), false});
}

}  // namespace

Status CacheFileCheck::checkBytes(std::string_view file) {
    auto read = [file](std::uint64_t offset, std::size_t length) {
        if (offset >= file.size()) return std::string();
        return std::string(file.substr(offset, length));
    };
    return checkFile(read, file.size());
}

Status CacheFileCheck::check(const std::string& path) {
    Result<ReadableFile> file = ReadableFile::open(path);
    if (file.isNotFound()) return Status::success();
    if (!file) return file.error();
    Result<std::uint64_t> size = file->size();
    if (!size) return size.error();
    auto read = [&](std::uint64_t offset, std::size_t length) {
        std::string bytes(length, '\0');
        Result<std::size_t> got = file->readAt(offset, std::span<char>(bytes.data(), bytes.size()));
        bytes.resize(got ? *got : 0);
        return bytes;
    };
    return checkFile(read, *size);
}

namespace {

std::string stampOf(const FileStatus& status) {
    return fmt::format("{} {} {} {} {}.{:09} {}.{:09}\n", status.device.major, status.device.minor, status.inode,
                       status.size, status.modifyTime.seconds, status.modifyTime.nanoseconds, status.changeTime.seconds,
                       status.changeTime.nanoseconds);
}

Locked<std::map<std::string, std::string>>& stampsOfThisProcess() {
    static Locked<std::map<std::string, std::string>> stamps;
    return stamps;
}

bool passedBefore(const std::string& path, const std::string& stamp) {
    bool known = stampsOfThisProcess().access([&](auto& stamps) {
        auto found = stamps.find(path);
        return found != stamps.end() && found->second == stamp;
    });
    if (known) return true;
    Result<std::string> kept = FileSystem::real().readFile(CacheFileCheck::stampPath(path), 256);
    return kept && *kept == stamp;
}

// Only a file that stayed as it was during the walk is remembered as passed:
// a writer may have changed it under the walk.
void rememberPassed(const std::string& path, const std::string& stamp) {
    Result<FileStatus> after = FileSystem::real().status(path);
    if (!after || stampOf(*after) != stamp) return;
    stampsOfThisProcess().access([&](auto& stamps) { stamps[path] = stamp; });
    (void)replaceFileAtomically(CacheFileCheck::stampPath(path), stamp, FileSystem::real(), 0600, MissingFolder::fail,
                                Flush::byTheSystem);
}

}  // namespace

std::string CacheFileCheck::stampPath(const std::string& path) {
    return path + ".checked";
}

Status CacheFileCheck::checkUnlessUnchanged(const std::string& path) {
    Result<FileStatus> status = FileSystem::real().status(path);
    if (!status) return check(path);
    const std::string stamp = stampOf(*status);
    if (passedBefore(path, stamp)) return Status::success();
    Status checked = check(path);
    if (checked && status->size > 0) rememberPassed(path, stamp);
    return checked;
}

}  // namespace quester
