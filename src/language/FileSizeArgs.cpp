#include "language/FileSizeArgs.h"

#include <array>

#include "language/UnicodeText.h"

namespace quester {

namespace {

struct UnitNames {
    SizeUnits units;
    std::string_view shortName;
    std::array<std::string_view, 3> otherNames;  // letter, singular, plural
};

constexpr std::array<UnitNames, 9> unitNames = {{
    {SizeUnits::bytes, "b", {"bytes", "bytes", "bytes"}},
    {SizeUnits::kilobytes, "kb", {"k", "kilobyte", "kilobytes"}},
    {SizeUnits::megabytes, "mb", {"m", "megabyte", "megabytes"}},
    {SizeUnits::gigabytes, "gb", {"g", "gigabyte", "gigabytes"}},
    {SizeUnits::terabytes, "tb", {"t", "terabyte", "terabytes"}},
    {SizeUnits::petabytes, "pb", {"p", "petabyte", "petabytes"}},
    {SizeUnits::exabyte, "eb", {"e", "exabyte", "exabytes"}},
    {SizeUnits::zettabyte, "zb", {"z", "zettabyte", "zettabytes"}},
    {SizeUnits::yottabyte, "yb", {"y", "yottabyte", "yottabytes"}},
}};

}  // namespace

std::string toString(SizeUnits units) {
    return std::string(unitNames[static_cast<size_t>(units)].shortName);
}

std::optional<SizeUnits> sizeUnitsFromString(std::string_view text) {
    const std::string lower = lowercased(text);
    for (const UnitNames& names : unitNames) {
        if (lower == names.shortName) return names.units;
        for (std::string_view name : names.otherNames) {
            if (lower == name) return names.units;
        }
    }
    return std::nullopt;
}

}  // namespace quester
