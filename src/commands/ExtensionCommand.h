#pragma once

#include "query/CommandBase.h"

namespace quester {

// Names with (or, negated, without) one extension: ".txt", "not .txt".
class ExtensionCommand final : public CommandBase<ExtensionCommand> {
public:
    // "extension" or "extensionNot"; args[0] is the extension text.
    static CommandPtr create(std::string_view commandName, const VariableArguments& args, const TemplateFlags& flags);

    // Lower-cased, one leading "." removed.
    ExtensionCommand(std::string_view extension, bool isNot);

    std::string commandToString() const override;
    std::string commandExample() const override;
    CommandApplyResult commandImpApply(SearchResult& to, SearchDataSourceDelegate* feedback,
                                       const QueryContainer& forQuery) override;
    std::vector<std::string> commandImpExtraSearchStrings() const override;
    std::vector<std::string> commandExtraHighlightStrings() const override { return {"." + wantedFileNameExtension}; }
    bool commandSupportsBooleanCombination() const override { return true; }
    std::optional<AvailableHelpFileNames> helpFileName() const override { return AvailableHelpFileNames::Extensions; }
    CommandRole commandRole() const override { return CommandRole::extension; }
    bool sameParameters(const ExtensionCommand& other) const { return isNot == other.isNot; }

    std::string wantedFileNameExtension;
    bool isNot = false;
};

}  // namespace quester
