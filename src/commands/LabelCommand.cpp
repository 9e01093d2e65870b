#include "commands/LabelCommand.h"

#include "language/UnicodeText.h"
#include "platform/ItemAttributes.h"
#include "query/SearchResult.h"

namespace quester {

namespace {

std::string joinedLowerCase(const std::vector<std::string>& names) {
    std::string joined;
    for (const auto& name : names) joined += (joined.empty() ? "" : " ") + name;
    return lowercased(joined);
}

}  // namespace

CommandPtr LabelCommand::create(std::string_view commandName, const VariableArguments& args, const TemplateFlags&) {
    const auto* word = argumentAt<SentenceComponent>(args, 0);
    if (!word) return nullptr;
    if (commandName != "label" && commandName != "labelExcluding") return nullptr;
    return std::make_shared<LabelCommand>(word->textLowered, commandName == "labelExcluding");
}

CommandApplyResult LabelCommand::commandImpApply(SearchResult& to, SearchDataSourceDelegate*, const QueryContainer&) {
    const bool tagged = joinedLowerCase(ItemAttributes::tagNames(to.url.path())).find(labelName) != std::string::npos;
    return tagged != notTag ? CommandApplyResult::accept : CommandApplyResult::exclude;
}

}  // namespace quester
