#include "cache/CachingUpdatesTag.h"

#include <array>
#include <utility>

namespace quester {

namespace {

struct TagFacts {
    CachingUpdatesTag tag;
    std::string_view name;
    std::int64_t seconds;  // 0: none
};

constexpr std::array<TagFacts, 9> tagFacts = {{
    {CachingUpdatesTag::defaultTiming, "default", 0},
    {CachingUpdatesTag::appRestart, "restart", 0},
    {CachingUpdatesTag::day, "day", 86400},
    {CachingUpdatesTag::twoDays, "2days", 172800},
    {CachingUpdatesTag::threeDays, "3days", 259200},
    {CachingUpdatesTag::week, "week", 604800},
    {CachingUpdatesTag::fortnight, "fortnight", 1209600},
    {CachingUpdatesTag::month, "month", 2678400},
    {CachingUpdatesTag::never, "never", 0},
}};

const TagFacts& factsOf(CachingUpdatesTag tag) {
    for (const TagFacts& facts : tagFacts)
        if (facts.tag == tag) return facts;
    return tagFacts[0];
}

}  // namespace

std::optional<CachingUpdatesTag> cachingUpdatesTagFromRaw(std::int64_t raw) {
    for (const TagFacts& facts : tagFacts)
        if (static_cast<std::int64_t>(facts.tag) == raw) return facts.tag;
    return std::nullopt;
}

std::optional<std::int64_t> cachingUpdatesSeconds(CachingUpdatesTag tag) {
    std::int64_t seconds = factsOf(tag).seconds;
    if (seconds == 0) return std::nullopt;
    return seconds;
}

std::string_view cachingUpdatesTagName(CachingUpdatesTag tag) {
    return factsOf(tag).name;
}

std::optional<CachingUpdatesTag> cachingUpdatesTagFromName(std::string_view name) {
    for (const TagFacts& facts : tagFacts)
        if (facts.name == name) return facts.tag;
    return std::nullopt;
}

}  // namespace quester
