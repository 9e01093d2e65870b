#include "language/DateCommandWhat.h"

#include <array>
#include <utility>

namespace quester {

std::optional<DateCommandWhat> dateCommandWhatFromWord(std::string_view word) {
    static constexpr std::array<std::pair<std::string_view, DateCommandWhat>, 6> words = {{
        {"modified", DateCommandWhat::modificationDate},
        {"changed", DateCommandWhat::modificationDate},
        {"edited", DateCommandWhat::modificationDate},
        {"created", DateCommandWhat::creationDate},
        {"made", DateCommandWhat::creationDate},
        {"accessed", DateCommandWhat::accessDate},
    }};
    for (const auto& [name, what] : words) {
        if (name == word) return what;
    }
    return std::nullopt;
}

std::string toString(DateCommandWhat what) {
    switch (what) {
        case DateCommandWhat::modificationDate:
            return "modified";
        case DateCommandWhat::creationDate:
            return "created";
        case DateCommandWhat::accessDate:
            return "accessed";
    }
    return "modified";
}

}  // namespace quester
