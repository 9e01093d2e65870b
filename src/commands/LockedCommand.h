#pragma once

#include "query/CommandBase.h"

namespace quester {

// "locked" or "not locked": the item's immutable flag, or no write permission
// for anyone; what can't be read counts as not locked.
class LockedCommand final : public CommandBase<LockedCommand> {
public:
    // "locked" or "lockedExcluding".
    static CommandPtr create(std::string_view commandName, const VariableArguments& args, const TemplateFlags& flags);

    explicit LockedCommand(bool inverted) : inverted(inverted) {}

    std::string commandToString() const override { return inverted ? "not locked" : "locked"; }
    std::string commandExample() const override { return inverted ? "**not locked**" : "**locked**"; }
    CommandApplyResult commandImpApply(SearchResult& to, SearchDataSourceDelegate* feedback,
                                       const QueryContainer& forQuery) override;
    bool commandSupportsBooleanCombination() const override { return true; }
    std::optional<AvailableHelpFileNames> helpFileName() const override { return AvailableHelpFileNames::Locked; }
    bool sameParameters(const LockedCommand& other) const { return inverted == other.inverted; }

    bool inverted = false;
};

}  // namespace quester
