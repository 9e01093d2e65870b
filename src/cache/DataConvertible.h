#pragma once

#include <bit>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

#include "support/Utf8Text.h"

namespace quester {

// What can be a key or a value of a store: `DataConvertible<T>::asData` gives
// the bytes of a value and `fromData` reads them back, answering none when the
// bytes are not a value of the type. Specialised for each stored type; the
// byte forms are written down in doc/cache-format.md.
template <typename T>
struct DataConvertible;

// Text stored as its UTF-8 bytes, no terminator. A plain `std::string` is
// bytes as they are; this wrapper is what insists on valid UTF-8.
struct Utf8String {
    std::string text;
    bool operator==(const Utf8String&) const = default;
};

// An instant as seconds since 2001-01-01 00:00:00 UTC, the epoch of the
// cache files' dates.
struct ReferenceDate {
    // Seconds from the Unix epoch to 2001-01-01.
    static constexpr std::int64_t unixOffset = 978307200;
    double secondsSince2001 = 0;

    static ReferenceDate fromUnixSeconds(double seconds) { return {seconds - static_cast<double>(unixOffset)}; }
    double unixSeconds() const { return secondsSince2001 + static_cast<double>(unixOffset); }
    bool operator==(const ReferenceDate&) const = default;
};

template <>
struct DataConvertible<std::string> {
    static std::string asData(const std::string& value) { return value; }
    static std::optional<std::string> fromData(std::string_view data) { return std::string(data); }
};

template <>
struct DataConvertible<Utf8String> {
    static std::string asData(const Utf8String& value) { return value.text; }
    static std::optional<Utf8String> fromData(std::string_view data) {
        if (!isValidUTF8(data)) return std::nullopt;
        return Utf8String{std::string(data)};
    }
};

// Fixed-width integers and IEEE floating point: little-endian, exactly the
// type's width.
template <typename T>
requires(std::integral<T> || std::floating_point<T>) && (!std::same_as<T, bool>)struct DataConvertible<T> {
    using Bits =
        std::conditional_t<sizeof(T) == 8, std::uint64_t,
                           std::conditional_t<sizeof(T) == 4, std::uint32_t,
                                              std::conditional_t<sizeof(T) == 2, std::uint16_t, std::uint8_t>>>;

    static std::string asData(T value) {
        Bits bits = std::bit_cast<Bits>(value);
        std::string data(sizeof(T), '\0');
        for (std::size_t i = 0; i < sizeof(T); ++i) data[i] = static_cast<char>((bits >> (8 * i)) & 0xFF);
        return data;
    }
    static std::optional<T> fromData(std::string_view data) {
        if (data.size() != sizeof(T)) return std::nullopt;
        Bits bits = 0;
        for (std::size_t i = 0; i < sizeof(T); ++i)
            bits |= static_cast<Bits>(static_cast<Bits>(static_cast<unsigned char>(data[i])) << (8 * i));
        return std::bit_cast<T>(bits);
    }
};

// One byte, 0 or 1.
template <>
struct DataConvertible<bool> {
    static std::string asData(bool value) { return std::string(1, value ? '\1' : '\0'); }
    static std::optional<bool> fromData(std::string_view data) {
        if (data.size() != 1 || static_cast<unsigned char>(data[0]) > 1) return std::nullopt;
        return data[0] == '\1';
    }
};

// A 64-bit float of seconds since 2001, little-endian.
template <>
struct DataConvertible<ReferenceDate> {
    static std::string asData(ReferenceDate value) { return DataConvertible<double>::asData(value.secondsSince2001); }
    static std::optional<ReferenceDate> fromData(std::string_view data) {
        std::optional<double> seconds = DataConvertible<double>::fromData(data);
        if (!seconds) return std::nullopt;
        return ReferenceDate{*seconds};
    }
};

}  // namespace quester
