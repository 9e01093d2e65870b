#include "commands/SizeCommand.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include "query/QuerySearchArguments.h"
#include "query/SearchResult.h"

namespace quester {

namespace {

std::string prefixFor(SizeCommandType command) {
    switch (command) {
        case SizeCommandType::smallerThan:
            return "smaller than";
        case SizeCommandType::greaterThan:
            return "larger than";
        case SizeCommandType::equalTo:
            return "size";
        case SizeCommandType::exactlyEqualTo:
            return "==";
    }
    return {};
}

constexpr std::int64_t kMaxBytes = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kMinBytes = std::numeric_limits<std::int64_t>::min();

std::int64_t saturatingAdd(std::int64_t a, std::int64_t b) {
    std::int64_t sum = 0;
    if (__builtin_add_overflow(a, b, &sum)) return b > 0 ? kMaxBytes : kMinBytes;
    return sum;
}

// A size a person can mean: not negative, and a byte count that a signed
// 64-bit integer holds, so that the number is never read as another one.
bool isTypableSize(const FileSizeArgs& size) {
    if (!std::isfinite(size.value) || size.value < 0) return false;
    return size.value * std::pow(1000.0, static_cast<int>(size.units)) < static_cast<double>(kMaxBytes);
}

}  // namespace

std::string shortestNumberText(double value) {
    if (std::isfinite(value) && value == std::trunc(value) && std::fabs(value) < 1e18) {
        return std::to_string(static_cast<long long>(value));
    }
    char buffer[64];
    auto end = std::to_chars(buffer, buffer + sizeof buffer, value).ptr;
    return std::string(buffer, end);
}

const std::vector<std::string>& SizeCommand::commandNames() {
    static const std::vector<std::string> names{"filesSmallerThan", "filesBiggerThan", "filesEqualTo",
                                                "filesExactlyEqualTo"};
    return names;
}

CommandPtr SizeCommand::create(std::string_view commandName, const VariableArguments& args, const TemplateFlags&) {
    const auto* size = argumentAt<FileSizeArgs>(args, 0);
    const auto& names = commandNames();
    auto found = std::find(names.begin(), names.end(), commandName);
    if (!size || found == names.end() || !isTypableSize(*size)) return nullptr;
    auto type = static_cast<SizeCommandType>(found - names.begin());
    return std::make_shared<SizeCommand>(type, size->value, size->units);
}

SizeCommand::SizeCommand(SizeCommandType command, double value, SizeUnits units)
    : command(command), units(units), value(value) {}

std::int64_t SizeCommand::toByteCount(double value, SizeUnits units) {
    double bytes = value * std::pow(1000.0, static_cast<int>(units));
    if (std::isnan(bytes)) return 0;
    if (bytes >= static_cast<double>(kMaxBytes)) return kMaxBytes;
    if (bytes <= static_cast<double>(kMinBytes)) return kMinBytes;
    return static_cast<std::int64_t>(bytes);
}

std::int64_t SizeCommand::tolerance() const {
    return std::max<std::int64_t>(toByteCount(unitCompareRange, units), 1);
}

std::string SizeCommand::commandToString() const {
    return prefixFor(command) + " " + shortestNumberText(value) + toString(units);
}

std::string SizeCommand::commandExample() const {
    return prefixFor(command) + " **" + shortestNumberText(value) + toString(units) + "**";
}

CommandApplyResult SizeCommand::commandImpApply(SearchResult& to, SearchDataSourceDelegate*, const QueryContainer&) {
    if (to.isDirectory) return CommandApplyResult::exclude;
    std::int64_t wanted = bytes();
    // Sizes beyond the signed range are larger than any wanted count.
    bool sizeFits = to.size <= static_cast<std::uint64_t>(kMaxBytes);
    std::int64_t size = sizeFits ? static_cast<std::int64_t>(to.size) : kMaxBytes;
    bool accepted = false;
    switch (command) {
        case SizeCommandType::smallerThan:
            accepted = wanted >= 1 && sizeFits && size < wanted;
            break;
        case SizeCommandType::greaterThan:
            accepted = wanted < 0 || !sizeFits || size > wanted;
            break;
        case SizeCommandType::exactlyEqualTo:
            accepted = sizeFits && size == wanted;
            break;
        case SizeCommandType::equalTo: {
            std::int64_t lower = saturatingAdd(wanted, -tolerance());
            accepted = (lower < 1 || size >= lower) && sizeFits && size <= saturatingAdd(wanted, tolerance());
            break;
        }
    }
    return accepted ? CommandApplyResult::accept : CommandApplyResult::exclude;
}

void SizeCommand::commandImpQuerySearchArguments(QuerySearchArguments& to) const {
    ByteCountRange range = to.fileSize.value_or(ByteCountRange{0, kMaxBytes});
    std::int64_t wanted = bytes();
    switch (command) {
        case SizeCommandType::smallerThan:
            if (wanted >= range.lowerBound) range.upperBound = wanted;
            break;
        case SizeCommandType::greaterThan:
            if (wanted <= range.upperBound) range.lowerBound = wanted;
            break;
        case SizeCommandType::equalTo:
            range = {std::max<std::int64_t>(saturatingAdd(wanted, -tolerance()), 0),
                     saturatingAdd(saturatingAdd(wanted, tolerance()), 1)};
            break;
        case SizeCommandType::exactlyEqualTo:
            range = {wanted, saturatingAdd(wanted, 1)};
            break;
    }
    to.fileSize = range;
}

}  // namespace quester
