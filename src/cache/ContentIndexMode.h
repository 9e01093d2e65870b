#pragma once

#include <cstdint>
#include <optional>

namespace quester {

// What a cache records besides names: nothing, the words of text documents,
// or those and the words that text recognition finds in pictures.
enum class ContentIndexMode : std::int64_t { off = 0, textDocuments = 1, ocrAndTextDocuments = 2 };

// None for any other raw value.
inline std::optional<ContentIndexMode> contentIndexModeFromRaw(std::int64_t raw) {
    if (raw < 0 || raw > 2) return std::nullopt;
    return static_cast<ContentIndexMode>(raw);
}

}  // namespace quester
