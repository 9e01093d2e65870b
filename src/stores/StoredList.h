#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace quester {

// The elements of a stored list that `decode` makes something of, in order;
// the others are dropped one by one. A value that is no list (a missing key
// reads as null) gives an empty list.
template <typename Element>
std::vector<Element> decodeStoredList(const nlohmann::json& list,
                                      const std::function<std::optional<Element>(const nlohmann::json&)>& decode) {
    std::vector<Element> elements;
    if (!list.is_array()) return elements;
    for (const auto& stored : list) {
        if (auto element = decode(stored)) elements.push_back(std::move(*element));
    }
    return elements;
}

// The list that stores `elements`, each as `encode` makes it.
template <typename Element, typename Encode>
nlohmann::json encodeStoredList(const std::vector<Element>& elements, Encode encode) {
    nlohmann::json list = nlohmann::json::array();
    for (const auto& element : elements) list.push_back(encode(element));
    return list;
}

// The texts of a stored list; other elements are dropped.
inline std::vector<std::string> decodeStoredTexts(const nlohmann::json& list) {
    return decodeStoredList<std::string>(list, [](const nlohmann::json& stored) -> std::optional<std::string> {
        if (!stored.is_string()) return std::nullopt;
        return stored.get<std::string>();
    });
}

// The value under `key`, null when there is none.
inline const nlohmann::json& storedValue(const nlohmann::json& values, const std::string& key) {
    static const nlohmann::json none;
    const auto found = values.find(key);
    return found == values.end() ? none : *found;
}

}  // namespace quester
