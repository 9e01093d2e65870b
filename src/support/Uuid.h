#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quester {

// A random (version 4) UUID. Printed and parsed in the usual 8-4-4-4-12 form,
// upper-case hex when printed, either case when parsed.
class Uuid {
public:
    // The nil UUID; use `random()` for a new identity.
    Uuid() = default;

    // A new random value. Thread safe.
    static Uuid random();
    static std::optional<Uuid> fromString(std::string_view text);

    std::string toString() const;
    const std::array<std::uint8_t, 16>& bytes() const { return value; }

    bool operator==(const Uuid&) const = default;
    auto operator<=>(const Uuid&) const = default;

private:
    std::array<std::uint8_t, 16> value{};
};

}  // namespace quester
