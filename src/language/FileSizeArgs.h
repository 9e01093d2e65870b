#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quester {

// Decimal units: the power of 1000 of each case is its index.
enum class SizeUnits { bytes, kilobytes, megabytes, gigabytes, terabytes, petabytes, exabyte, zettabyte, yottabyte };

// "b", "kb", "mb", … "yb".
std::string toString(SizeUnits units);

// Accepts "bytes", "b", and for each larger unit its letter, its two-letter short
// form and its name in singular and plural ("k", "kb", "kilobyte", "kilobytes"),
// in any case. "byte" alone is no unit.
std::optional<SizeUnits> sizeUnitsFromString(std::string_view text);

// The value of a "~file size" variable: "10mb", "1.5 gb", "twenty kb".
struct FileSizeArgs {
    double value = 0;
    SizeUnits units = SizeUnits::bytes;

    bool operator==(const FileSizeArgs&) const = default;
};

}  // namespace quester
