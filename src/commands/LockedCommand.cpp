#include "commands/LockedCommand.h"

#include "platform/ItemAttributes.h"
#include "query/SearchResult.h"

namespace quester {

CommandPtr LockedCommand::create(std::string_view commandName, const VariableArguments&, const TemplateFlags&) {
    if (commandName == "locked") return std::make_shared<LockedCommand>(false);
    if (commandName == "lockedExcluding") return std::make_shared<LockedCommand>(true);
    return nullptr;
}

CommandApplyResult LockedCommand::commandImpApply(SearchResult& to, SearchDataSourceDelegate*, const QueryContainer&) {
    const bool locked = ItemAttributes::isUserImmutable(to.url.path());
    return locked != inverted ? CommandApplyResult::accept : CommandApplyResult::exclude;
}

}  // namespace quester
