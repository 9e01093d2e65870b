#include "commands/ExcludeFolderCommand.h"

#include "language/UnicodeText.h"
#include "query/SearchResult.h"
#include "support/PathText.h"

namespace quester {

CommandPtr ExcludeFolderCommand::create(std::string_view, const VariableArguments& args, const TemplateFlags&) {
    const auto* word = argumentAt<SentenceComponent>(args, 0);
    if (!word) return nullptr;
    return std::make_shared<ExcludeFolderCommand>(word->textOriginalCase);
}

CommandApplyResult ExcludeFolderCommand::commandImpApply(SearchResult& to, SearchDataSourceDelegate*,
                                                         const QueryContainer&) {
    std::string parent = lowercased(parentPath(to.url.path())) + "/";
    std::string folder = lowercased(insidePath);
    bool excluded = parent.find(folder) != std::string::npos || parent == folder;
    return excluded ? CommandApplyResult::exclude : CommandApplyResult::accept;
}

}  // namespace quester
