#pragma once

#include <cstdint>

#include "language/FileSizeArgs.h"
#include "query/CommandBase.h"

namespace quester {

enum class SizeCommandType { smallerThan, greaterThan, equalTo, exactlyEqualTo };

// A file size test in decimal units: "larger than 10mb", "smaller than 1.5gb",
// "size 3mb" (a quarter unit either side), "== 1024b". Folders never pass.
class SizeCommand final : public CommandBase<SizeCommand> {
public:
    // The template names, in the order of the size test's cases.
    static const std::vector<std::string>& commandNames();
    // args[0] is the FileSizeArgs of "~file size".
    static CommandPtr create(std::string_view commandName, const VariableArguments& args, const TemplateFlags& flags);

    SizeCommand(SizeCommandType command, double value, SizeUnits units);

    // value × 1000^units, truncated, saturating at the limits of 64 bits.
    static std::int64_t toByteCount(double value, SizeUnits units);

    std::string commandToString() const override;
    std::string commandExample() const override;
    CommandApplyResult commandImpApply(SearchResult& to, SearchDataSourceDelegate* feedback,
                                       const QueryContainer& forQuery) override;
    void commandImpQuerySearchArguments(QuerySearchArguments& to) const override;
    bool commandSupportsBooleanCombination() const override { return true; }
    std::optional<AvailableHelpFileNames> helpFileName() const override { return AvailableHelpFileNames::FileSize; }
    bool sameParameters(const SizeCommand& other) const { return command == other.command; }

    SizeCommandType command;
    SizeUnits units;
    double value;
    static constexpr double unitCompareRange = 0.25;

private:
    std::int64_t bytes() const { return toByteCount(value, units); }
    std::int64_t tolerance() const;
};

// A number as an integer when it is whole, else as the shortest decimal text.
std::string shortestNumberText(double value);

}  // namespace quester
