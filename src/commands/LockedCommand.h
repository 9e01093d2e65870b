#pragma once

#include "query/CommandBase.h"

namespace quester {

// "locked" or "not locked". Reading the immutable flag belongs to the attribute
// layer; until it is wired in the command gives no verdict.
class LockedCommand final : public CommandBase<LockedCommand> {
public:
    // "locked" or "lockedExcluding".
    static CommandPtr create(std::string_view commandName, const VariableArguments& args, const TemplateFlags& flags);

    explicit LockedCommand(bool inverted) : inverted(inverted) {}

    std::string commandToString() const override { return inverted ? "not locked" : "locked"; }
    std::string commandExample() const override { return inverted ? "**not locked**" : "**locked**"; }
    CommandApplyResult commandImpApply(SearchResult&, SearchDataSourceDelegate*, const QueryContainer&) override {
        return CommandApplyResult::skip;
    }
    bool commandSupportsBooleanCombination() const override { return true; }
    std::optional<AvailableHelpFileNames> helpFileName() const override { return AvailableHelpFileNames::Locked; }
    bool sameParameters(const LockedCommand& other) const { return inverted == other.inverted; }

    bool inverted = false;
};

}  // namespace quester
