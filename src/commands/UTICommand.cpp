#include "commands/UTICommand.h"

#include "query/SearchResult.h"

namespace quester {

CommandPtr UTICommand::create(std::string_view, const VariableArguments& args, const TemplateFlags&) {
    const auto* kind = argumentAt<std::string>(args, 0);
    if (!kind || kind->empty()) return nullptr;
    return std::make_shared<UTICommand>(*kind);
}

CommandApplyResult UTICommand::commandImpApply(SearchResult& to, SearchDataSourceDelegate*, const QueryContainer&) {
    if (wantedUTI == "file" && !to.isDirectory) return CommandApplyResult::accept;
    if (wantedUTI == "folder" && to.isDirectory) return CommandApplyResult::accept;
    return CommandApplyResult::skip;
}

}  // namespace quester
