#pragma once

#include <string_view>

#include "query/CommandBase.h"

namespace quester {

// A limit on how deep below its volume's root an item lies: "max depth 2".
// 0 filters nothing. The directory walk reads it too.
class MaxDepth final : public CommandBase<MaxDepth> {
public:
    // args[0] is the integer limit; without one the limit is 0.
    static CommandPtr create(std::string_view commandName, const VariableArguments& args, const TemplateFlags& flags);

    explicit MaxDepth(int maxDepth) : maxDepth(maxDepth) {}

    // Components below the volume's root (the volume's own name under the
    // volumes folder doesn't count), one fewer with `dropLast`.
    static int calcPathDepth(std::string_view target, bool dropLast);

    std::string commandToString() const override { return "max depth " + std::to_string(maxDepth); }
    std::string commandExample() const override { return "max depth **" + std::to_string(maxDepth) + "**"; }
    CommandApplyResult commandImpApply(SearchResult& to, SearchDataSourceDelegate* feedback,
                                       const QueryContainer& forQuery) override;
    bool commandIsOnlyAFilter() const override { return true; }
    bool commandSupportsBooleanCombination() const override { return true; }
    std::optional<AvailableHelpFileNames> helpFileName() const override {
        return AvailableHelpFileNames::MaxFolderDepth;
    }
    bool sameParameters(const MaxDepth&) const { return true; }

    int maxDepth;
};

}  // namespace quester
