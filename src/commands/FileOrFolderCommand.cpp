#include "commands/FileOrFolderCommand.h"

#include "query/SearchResult.h"

namespace quester {

CommandPtr FileOrFolderCommand::create(std::string_view commandName, const VariableArguments&, const TemplateFlags&) {
    if (commandName == "isFile") return std::make_shared<FileOrFolderCommand>(FileOrFolderType::file);
    if (commandName == "isFolder") return std::make_shared<FileOrFolderCommand>(FileOrFolderType::folder);
    return nullptr;
}

CommandApplyResult FileOrFolderCommand::commandImpApply(SearchResult& to, SearchDataSourceDelegate*,
                                                        const QueryContainer&) {
    FileOrFolderType found = to.isDirectory ? FileOrFolderType::folder : FileOrFolderType::file;
    if (to.isDirectory && to.url.path().ends_with(".app")) return CommandApplyResult::exclude;
    return found == type ? CommandApplyResult::accept : CommandApplyResult::exclude;
}

}  // namespace quester
