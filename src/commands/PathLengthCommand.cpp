#include "commands/PathLengthCommand.h"

#include "query/SearchResult.h"

namespace quester {

CommandPtr PathLengthCommand::create(std::string_view commandName, const VariableArguments& args, const TemplateFlags&) {
    const auto* count = argumentAt<int>(args, 0);
    if (!count) return nullptr;
    if (commandName == "pathMaxLength") return std::make_shared<PathLengthCommand>(LengthChoice::max, *count);
    if (commandName == "pathMinLength") return std::make_shared<PathLengthCommand>(LengthChoice::min, *count);
    return nullptr;
}

CommandApplyResult PathLengthCommand::commandImpApply(SearchResult& to, SearchDataSourceDelegate*, const QueryContainer&) {
    return judgeLength(to.url.path(), choice, count);
}

}  // namespace quester
