#pragma once

#include <cstdint>
#include <string_view>

namespace quester {

// The words of the conversation between the program and its import helper
// (doc/import-helper.md): each message is a JSON object whose "op" names it.
namespace ImportTextMessages {

inline constexpr std::string_view start = "start";
inline constexpr std::string_view started = "started";
inline constexpr std::string_view importText = "importText";
inline constexpr std::string_view wordsInFile = "wordsInFile";
inline constexpr std::string_view cancel = "cancel";
inline constexpr std::string_view quit = "quit";
inline constexpr std::string_view progress = "progress";
inline constexpr std::string_view log = "log";
inline constexpr std::string_view reply = "reply";

// What a cancel message asks: nothing, the file whose hash it carries, or
// whatever runs.
enum class CancelMessage : std::uint8_t { clear = 0, cancelFile = 1, cancelAll = 2 };

// Tags progress and cancel messages with the file they mean, so that a late
// message about an earlier file does no harm: 5381, then × 33 + each byte of
// the path, in wrapping 64-bit arithmetic, cut to the low 32 bits. An empty
// path hashes to 0.
inline std::uint32_t hashFile(std::string_view path) {
    if (path.empty()) return 0;
    std::uint64_t hash = 5381;
    for (char byte : path) hash = hash * 33 + static_cast<unsigned char>(byte);
    return static_cast<std::uint32_t>(hash);
}

}  // namespace ImportTextMessages

}  // namespace quester
