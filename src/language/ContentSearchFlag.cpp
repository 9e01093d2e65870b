#include "language/ContentSearchFlag.h"

#include <array>
#include <utility>

namespace quester {

std::optional<ContentSearchFlag> contentSearchFlagFromName(std::string_view name) {
    static constexpr std::array<std::pair<std::string_view, ContentSearchFlag>, 6> names = {{
        {"without", ContentSearchFlag::without},
        {"allFiles", ContentSearchFlag::allFiles},
        {"wholeWords", ContentSearchFlag::wholeWords},
        {"allWords", ContentSearchFlag::allWords},
        {"useOCR", ContentSearchFlag::useOCR},
        {"caseSensitive", ContentSearchFlag::caseSensitive},
    }};
    for (const auto& [text, flag] : names) {
        if (text == name) return flag;
    }
    return std::nullopt;
}

}  // namespace quester
