#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "support/Result.h"

namespace quester {

// A setting that a person may read and change by its name: its type, and its
// registered default when it has one. The stores' own keys (history, groups,
// ignore lists…) are not settings: their commands change them.
struct PreferenceKey {
    enum class Type { truthValue, integer, number, text };

    std::string name;
    Type type = Type::truthValue;
    std::optional<nlohmann::json> defaultValue;  // none: no registered default

    // Every setting: the registered ones first, in the order they are
    // registered, then the settings without a default.
    static const std::vector<PreferenceKey>& all();
    static const PreferenceKey* find(std::string_view name);

    // "a truth value (true or false)", "a whole number", "a number", "text".
    static std::string typeDescription(Type type);

    // The value of `text` as this key's type: "true", "no", "1"… for a truth
    // value, a decimal whole number, any decimal number, or the text itself.
    // Fails with what the key takes.
    Result<nlohmann::json> parse(const std::string& text) const;
};

}  // namespace quester
