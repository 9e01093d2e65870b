#include "language/TimeUnit.h"

#include <array>
#include <utility>

namespace quester {

std::optional<TimeUnit> timeUnitFromWord(std::string_view word) {
    static constexpr std::array<std::pair<std::string_view, TimeUnit>, 12> units = {{
        {"minute", TimeUnit::minute},
        {"minutes", TimeUnit::minute},
        {"hour", TimeUnit::hour},
        {"hours", TimeUnit::hour},
        {"day", TimeUnit::day},
        {"days", TimeUnit::day},
        {"week", TimeUnit::weekOfYear},
        {"weeks", TimeUnit::weekOfYear},
        {"month", TimeUnit::month},
        {"months", TimeUnit::month},
        {"year", TimeUnit::year},
        {"years", TimeUnit::year},
    }};
    for (const auto& [name, unit] : units) {
        if (name == word) return unit;
    }
    return std::nullopt;
}

}  // namespace quester
