#pragma once

#include <cstdint>
#include <span>

namespace quester {

// The template data of the query language ("Script"), as compiled into the
// program: UTF-8 text scrambled with Munge, multiplier 1. The readable source is
// src/resources/Script.txt; the build scrambles it. Unscramble a copy before use.
std::span<const std::uint8_t> scriptResource();

}  // namespace quester
