#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "cache/DataConvertible.h"
#include "platform/FileStatus.h"

namespace quester {

// One file or folder as a cache records it. Identifier 0 is the cache's
// target, which has no record of its own. A plain value.
struct FSItem {
    enum class types : std::uint8_t { directory = 0, file = 1 };

    std::uint32_t fsid = 0;
    std::uint32_t parentID = 0;
    types type = types::file;
    std::string name;
    std::int32_t creationDate = 0;      // whole seconds since 2001, 0 when unknown
    std::int32_t modificationDate = 0;  // the same
    std::uint8_t version = 1;
    std::int64_t size = 0;  // bytes; 0 for a folder, -1 read from a record that has none

    bool isDirectory() const { return type == types::directory; }
    bool operator==(const FSItem&) const = default;

    // The target itself: identifier 0, a folder without name or dates.
    static FSItem root();

    // The record form (doc/cache-format.md). A name of 65536 bytes or more
    // cannot be stored: none.
    std::optional<std::string> asData() const;
    // Reads a record, testing the bounds at each step: none when anything up
    // to the name is missing, the type is neither 0 nor 1, or the name is
    // empty or not UTF-8. Records of older caches end after the name
    // (version 0, size -1) or after the version (size -1).
    static std::optional<FSItem> fromData(std::string_view data);
    // The name of a record, read without the rest: a walk that tests names
    // decodes only the records it keeps. Not checked for UTF-8; none where
    // `fromData` fails before the name.
    static std::optional<std::string_view> nameInData(std::string_view data);
    static constexpr std::size_t typeOffset = 8;
    static constexpr std::size_t nameLengthOffset = 17;

    // Whole seconds since 2001, rounded down; 0 when outside 32 bits.
    static std::int32_t storedDate(FileTime time);
};

template <>
struct DataConvertible<FSItem> {
    // A name too long to store comes out as "Unknown".
    static std::string asData(const FSItem& item);
    static std::optional<FSItem> fromData(std::string_view data) { return FSItem::fromData(data); }
};

}  // namespace quester
