#include "commands/MaxDepth.h"

#include <algorithm>

#include "platform/PlatformProfile.h"
#include "query/SearchResult.h"

namespace quester {

CommandPtr MaxDepth::create(std::string_view, const VariableArguments& args, const TemplateFlags&) {
    const auto* limit = argumentAt<int>(args, 0);
    if (limit && *limit < 0) return nullptr;
    return std::make_shared<MaxDepth>(limit ? *limit : 0);
}

int MaxDepth::calcPathDepth(std::string_view target, bool dropLast) {
    std::string volumesFolder = PlatformProfile::current()->volumesFolder;
    bool onVolume = !volumesFolder.empty() && target.starts_with(volumesFolder + "/");
    if (!volumesFolder.empty() && target.starts_with(volumesFolder)) target.remove_prefix(volumesFolder.size());
    if (target.starts_with('/')) target.remove_prefix(1);
    int depth = static_cast<int>(std::count(target.begin(), target.end(), '/')) + 1;
    if (onVolume) depth -= 1;
    if (dropLast) depth -= 1;
    return depth;
}

CommandApplyResult MaxDepth::commandImpApply(SearchResult& to, SearchDataSourceDelegate*, const QueryContainer&) {
    if (maxDepth < 1) return CommandApplyResult::accept;
    return maxDepth < calcPathDepth(to.url.path(), true) ? CommandApplyResult::exclude : CommandApplyResult::accept;
}

}  // namespace quester
