#pragma once

#include "query/CommandBase.h"

namespace quester {

// Leaves out items whose parent path holds a text: `excluding folder "tmp"`
// drops /x/tmp/a and /x/tmpfiles/a alike.
class ExcludeFolderCommand final : public CommandBase<ExcludeFolderCommand> {
public:
    // args[0] is a word whose typed text is the folder.
    static CommandPtr create(std::string_view commandName, const VariableArguments& args, const TemplateFlags& flags);

    explicit ExcludeFolderCommand(std::string insidePath) : insidePath(std::move(insidePath)) {}

    std::string commandToString() const override { return "excluding folder " + quotedText(insidePath, false); }
    std::string commandExample() const override { return "excluding folder \"**folder**\""; }
    CommandApplyResult commandImpApply(SearchResult& to, SearchDataSourceDelegate* feedback,
                                       const QueryContainer& forQuery) override;
    bool commandSupportsBooleanCombination() const override { return true; }
    std::optional<AvailableHelpFileNames> helpFileName() const override {
        return AvailableHelpFileNames::ExcludingFolder;
    }
    bool sameParameters(const ExcludeFolderCommand& other) const { return insidePath == other.insidePath; }

    std::string insidePath;
};

}  // namespace quester
