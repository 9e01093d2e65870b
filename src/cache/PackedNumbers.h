#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quester {

// The packed form of a list of unsigned 32-bit numbers (doc/cache-format.md):
// empty, one byte, two bytes most significant first, or groups of
// {width, count, count numbers of width bytes, most significant first}.
std::string storePacked(const std::vector<std::uint32_t>& numbers);
// Reads the packed form back. Bytes that are no packed form (a width of 0 or
// above 4, a group running past the end) read as an empty list.
std::vector<std::uint32_t> unpackStored(std::string_view data);

// Keeps the first element and puts each later one's difference from its
// predecessor in its place; lists shorter than 2 come back as they are.
std::vector<std::int64_t> differential(const std::vector<std::int64_t>& numbers);
// The running sum that undoes `differential`.
std::vector<std::int64_t> inverseDifferential(const std::vector<std::int64_t>& numbers);

// An ascending list of identifiers, delta coded and packed: the stored form of
// a child list and of a word's documents.
std::string storeDeltaPacked(const std::vector<std::uint32_t>& ascending);
// Undoes `storeDeltaPacked`; a sum that leaves the unsigned 32-bit range
// reads as an empty list.
std::vector<std::uint32_t> unpackDeltaStored(std::string_view data);

}  // namespace quester
