#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "language/DateCommandWhen.h"

namespace quester {

// A half-open range of signed byte counts, lowerBound ..< upperBound.
struct ByteCountRange {
    std::int64_t lowerBound = 0;
    std::int64_t upperBound = 0;

    bool operator==(const ByteCountRange&) const = default;
};

// What index-based sources may narrow their reads by. Commands fill it in only
// when none of them sits under an OR, so every field here is a plain AND.
struct QuerySearchArguments {
    // False: every found path counts as inside the query's location.
    bool checkPathForResults = true;
    std::optional<std::string> word;
    std::optional<DateRange> modificationDate;
    std::optional<DateRange> creationDate;
    std::optional<ByteCountRange> fileSize;

    bool operator==(const QuerySearchArguments&) const = default;
};

}  // namespace quester
