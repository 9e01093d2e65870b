#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace quester {

// How often a cache is brought up to date; stored by its raw value.
// `defaultTiming` defers to the preference "updateCachesEvery".
enum class CachingUpdatesTag : std::int64_t {
    defaultTiming = 0,
    appRestart = 100,
    day = 200,
    twoDays = 300,
    threeDays = 400,
    week = 500,
    fortnight = 600,
    month = 700,
    never = 800,
};

// None for a raw value that is no tag.
std::optional<CachingUpdatesTag> cachingUpdatesTagFromRaw(std::int64_t raw);
// The age after which a cache with this tag is due; none for the tags
// without one (`defaultTiming`, `appRestart`, `never`).
std::optional<std::int64_t> cachingUpdatesSeconds(CachingUpdatesTag tag);
// "default", "restart", "day", "2days", "3days", "week", "fortnight", "month", "never".
std::string_view cachingUpdatesTagName(CachingUpdatesTag tag);
std::optional<CachingUpdatesTag> cachingUpdatesTagFromName(std::string_view name);

}  // namespace quester
