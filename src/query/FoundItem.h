#pragma once

#include <cstdint>
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

    bool operator==(const FoundItem&) const = default;
};

}  // namespace quester
