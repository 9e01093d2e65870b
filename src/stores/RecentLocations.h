#pragma once

#include <string>
#include <vector>

#include "stores/Preferences.h"

namespace quester {

// The folders searched lately, newest first, as a list of paths under the
// preference "recentLocations", at most "recentItemsMaxCount" of them. A
// folder already on the list stays where it is. Changes read the list as the
// file holds it now and write it back under its lock. Any thread.
class RecentLocations {
public:
    static constexpr const char* key = "recentLocations";

    explicit RecentLocations(Preferences& preferences = Preferences::shared());

    std::vector<std::string> contents() const;
    std::int64_t maxElements() const;
    // Unless the list holds it: with the list full, the oldest go until there
    // is room for one, and the path goes in front.
    Status add(const std::string& path);

private:
    Preferences& preferences;
};

}  // namespace quester
