#pragma once

#include "commands/LengthLimit.h"
#include "query/CommandBase.h"

namespace quester {

// A bound on the length of the item's whole path: "max path length 20", "min path length 5".
class PathLengthCommand final : public CommandBase<PathLengthCommand> {
public:
    // "pathMaxLength" or "pathMinLength"; args[0] is the integer count.
    static CommandPtr create(std::string_view commandName, const VariableArguments& args, const TemplateFlags& flags);

    PathLengthCommand(LengthChoice choice, int count) : choice(choice), count(count) {}

    std::string commandToString() const override { return lengthCommandText("path", choice, count, false); }
    std::string commandExample() const override { return lengthCommandText("path", choice, count, true); }
    CommandApplyResult commandImpApply(SearchResult& to, SearchDataSourceDelegate* feedback,
                                       const QueryContainer& forQuery) override;
    bool commandSupportsBooleanCombination() const override { return true; }
    std::optional<AvailableHelpFileNames> helpFileName() const override { return AvailableHelpFileNames::NamePathLength; }
    bool sameParameters(const PathLengthCommand& other) const { return choice == other.choice; }

    LengthChoice choice;
    int count;
};

}  // namespace quester
