#pragma once

#include "query/CommandBase.h"

namespace quester {

enum class FileOrFolderType { file, folder };

// "is file" or "is folder". An application bundle (a folder ending in ".app")
// is neither.
class FileOrFolderCommand final : public CommandBase<FileOrFolderCommand> {
public:
    // "isFile" or "isFolder".
    static CommandPtr create(std::string_view commandName, const VariableArguments& args, const TemplateFlags& flags);

    explicit FileOrFolderCommand(FileOrFolderType type) : type(type) {}

    std::string commandToString() const override { return type == FileOrFolderType::file ? "is file" : "is folder"; }
    std::string commandExample() const override { return "is **folder**"; }
    CommandApplyResult commandImpApply(SearchResult& to, SearchDataSourceDelegate* feedback,
                                       const QueryContainer& forQuery) override;
    bool commandSupportsBooleanCombination() const override { return true; }
    std::optional<AvailableHelpFileNames> helpFileName() const override { return AvailableHelpFileNames::Kind; }
    bool sameParameters(const FileOrFolderCommand&) const { return true; }

    FileOrFolderType type;
};

}  // namespace quester
