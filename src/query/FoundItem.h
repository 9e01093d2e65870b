#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace quester {

// One hit inside an item: a found line, a database row, an archive entry or a
// mail message.
struct FoundItem {
    enum class Category { file, directory, link, summary, row, message };

    Category type = Category::summary;
    std::string title;
    std::string entry;
    std::string location;
    std::uint64_t size = 0;
    std::int64_t modified = 0;  // seconds since 1970
    // The entry's checksum, for a zip entry; none for everything else.
    std::optional<std::uint32_t> crc32;

    bool operator==(const FoundItem&) const = default;
};

}  // namespace quester
