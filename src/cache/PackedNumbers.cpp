#include "cache/PackedNumbers.h"

#include <limits>

namespace quester {

namespace {

constexpr std::size_t maxGroupCount = 255;

std::size_t widthOf(std::uint32_t value) {
    if (value > 0xFFFFFF) return 4;
    if (value > 0xFFFF) return 3;
    if (value > 0xFF) return 2;
    return 1;
}

void appendBigEndian(std::string& data, std::uint32_t value, std::size_t width) {
    for (std::size_t i = width; i-- > 0;) data.push_back(static_cast<char>((value >> (8 * i)) & 0xFF));
}

std::uint32_t readBigEndian(std::string_view data, std::size_t offset, std::size_t width) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < width; ++i) value = (value << 8) | static_cast<unsigned char>(data[offset + i]);
    return value;
}

}  // namespace

std::string storePacked(const std::vector<std::uint32_t>& numbers) {
    std::string data;
    if (numbers.empty()) return data;
    if (numbers.size() == 1 && numbers[0] <= 0xFFFF) {
        appendBigEndian(data, numbers[0], numbers[0] > 0xFF ? 2 : 1);
        return data;
    }
    data.reserve(numbers.size() * 2 + 2);
    std::size_t position = 0;
    while (position < numbers.size()) {
        std::size_t width = widthOf(numbers[position]);
        std::size_t end = position + 1;
        while (end < numbers.size() && end - position < maxGroupCount && widthOf(numbers[end]) <= width) ++end;
        data.push_back(static_cast<char>(width));
        data.push_back(static_cast<char>(end - position));
        for (std::size_t i = position; i < end; ++i) appendBigEndian(data, numbers[i], width);
        position = end;
    }
    return data;
}

std::vector<std::uint32_t> unpackStored(std::string_view data) {
    if (data.empty()) return {};
    if (data.size() == 1) return {static_cast<unsigned char>(data[0])};
    if (data.size() == 2) return {readBigEndian(data, 0, 2)};
    std::vector<std::uint32_t> numbers;
    std::size_t offset = 0;
    while (offset < data.size()) {
        if (data.size() - offset < 2) return {};
        std::size_t width = static_cast<unsigned char>(data[offset]);
        std::size_t count = static_cast<unsigned char>(data[offset + 1]);
        offset += 2;
        if (width == 0 || width > 4 || count * width > data.size() - offset) return {};
        for (std::size_t i = 0; i < count; ++i, offset += width) numbers.push_back(readBigEndian(data, offset, width));
    }
    return numbers;
}

std::vector<std::int64_t> differential(const std::vector<std::int64_t>& numbers) {
    if (numbers.size() < 2) return numbers;
    std::vector<std::int64_t> deltas(numbers.size());
    deltas[0] = numbers[0];
    for (std::size_t i = 1; i < numbers.size(); ++i) deltas[i] = numbers[i] - numbers[i - 1];
    return deltas;
}

std::vector<std::int64_t> inverseDifferential(const std::vector<std::int64_t>& numbers) {
    std::vector<std::int64_t> sums(numbers.size());
    std::int64_t sum = 0;
    for (std::size_t i = 0; i < numbers.size(); ++i) sums[i] = sum += numbers[i];
    return sums;
}

std::string storeDeltaPacked(const std::vector<std::uint32_t>& ascending) {
    std::vector<std::uint32_t> deltas(ascending.size());
    for (std::size_t i = 0; i < ascending.size(); ++i)
        deltas[i] = i == 0 ? ascending[0] : ascending[i] - ascending[i - 1];
    return storePacked(deltas);
}

std::vector<std::uint32_t> unpackDeltaStored(std::string_view data) {
    std::vector<std::uint32_t> numbers = unpackStored(data);
    std::uint64_t sum = 0;
    for (std::uint32_t& number : numbers) {
        sum += number;
        if (sum > std::numeric_limits<std::uint32_t>::max()) return {};
        number = static_cast<std::uint32_t>(sum);
    }
    return numbers;
}

}  // namespace quester
