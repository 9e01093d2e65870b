#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "cache/ContentIndexMode.h"
#include "support/Result.h"

namespace quester {

// What a cache file says of itself, stored as JSON under "DdocumentInfo".
// A plain value.
struct DocumentInfo {
    // Seconds since 2001 standing for "never": long before any build.
    static constexpr double distantPast = -63114076800.0;

    std::optional<std::string> suggestedTarget;  // the target's path at the last save
    double lastUpdated = distantPast;            // seconds since 2001
    std::optional<std::int64_t> numberOfFSItems;
    ContentIndexMode lastIndexMode = ContentIndexMode::off;
    bool isDirty = false;
    std::optional<std::string> diskKey;  // the disk the target lay on at the first build

    std::string toJSON() const;
    // corrupt when the text is no JSON object with the keys that are always
    // present, or holds an unknown mode.
    static Result<DocumentInfo> fromJSON(std::string_view text);
};

}  // namespace quester
