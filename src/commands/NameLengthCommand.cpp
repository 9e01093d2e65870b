#include "commands/NameLengthCommand.h"

#include "platform/PathText.h"
#include "query/SearchResult.h"

namespace quester {

CommandPtr NameLengthCommand::create(std::string_view commandName, const VariableArguments& args, const TemplateFlags&) {
    const auto* count = argumentAt<int>(args, 0);
    if (!count) return nullptr;
    if (commandName == "nameMaxLength") return std::make_shared<NameLengthCommand>(LengthChoice::max, *count);
    if (commandName == "nameMinLength") return std::make_shared<NameLengthCommand>(LengthChoice::min, *count);
    return nullptr;
}

CommandApplyResult NameLengthCommand::commandImpApply(SearchResult& to, SearchDataSourceDelegate*, const QueryContainer&) {
    return judgeLength(lastPathComponent(to.url.path()), choice, count);
}

}  // namespace quester
