#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quester {

// Texts that result rows show.

// The last path component without its extension: "/a/Show.S01E02.mkv" gives
// "Show.S01E02"; a name that starts with its only dot keeps it.
std::string nameWithoutExtension(std::string_view path);

// A byte count as a file browser shows it, in decimal units: "1 byte",
// "999 bytes", "12 KB", "1.2 MB", "3.46 GB", with the default locale's digits.
std::string fileSizeText(std::uint64_t bytes);
// The size column's text: `fileSizeText`, or "--" for 0.
std::string displaySizeText(std::uint64_t bytes);

// `text` with each sequence that isn't UTF-8 replaced by U+FFFD, so that a
// name of any bytes fits a UTF-8 file as one row.
std::string withReplacementCharacters(std::string_view text);
// `text` as a terminal may show it: each control character (C0, DEL, C1) and
// each sequence that isn't UTF-8 becomes "?", so that a name can neither move
// the cursor, recolour the screen nor break a line.
std::string terminalSafeText(std::string_view text);

}  // namespace quester
