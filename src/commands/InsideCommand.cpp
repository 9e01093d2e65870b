#include "commands/InsideCommand.h"

#include <unistd.h>

#include <climits>
#include <cstdlib>

#include "language/UnicodeText.h"
#include "platform/Url.h"
#include "query/SearchResult.h"
#include "support/AppDirectories.h"
#include "support/PathText.h"

namespace quester {

namespace {

std::string homeFolder() {
    std::string home = AppDirectories::homeDirectory();
    return home.empty() ? "/" : home;
}

std::string resolvingSymlinks(const std::string& path) {
    char resolved[PATH_MAX];
    return realpath(path.c_str(), resolved) ? std::string(resolved) : path;
}

std::string withTrailingSlash(std::string path) {
    if (!path.ends_with('/')) path += '/';
    return path;
}

}  // namespace

std::string expandingTildeInPath(const std::string& path) {
    if (path == "~") return homeFolder();
    if (path.starts_with("~/")) return joinPath(homeFolder(), path.substr(2));
    return path;
}

CommandPtr InsideCommand::create(std::string_view, const VariableArguments& args, const TemplateFlags&) {
    const auto* word = argumentAt<SentenceComponent>(args, 0);
    if (!word) return nullptr;
    return std::make_shared<InsideCommand>(word->textOriginalCase);
}

InsideCommand::InsideCommand(std::string path) : insidePath(std::move(path)) {
    std::string expanded = expandingTildeInPath(insidePath);
    if (!expanded.starts_with('/')) return;
    isAbsolutePath = true;
    absoluteScopePath = resolvingSymlinks(expanded);
    normalisedAbsoluteBase = withTrailingSlash(lowercased(Url::correctRootBasedPath(*absoluteScopePath)));
}

CommandApplyResult InsideCommand::commandImpApply(SearchResult& to, SearchDataSourceDelegate*, const QueryContainer&) {
    bool inside = false;
    if (isAbsolutePath) {
        inside = (lowercased(Url::correctRootBasedPath(to.url.path())) + "/").starts_with(normalisedAbsoluteBase);
    } else {
        inside = lowercased(parentPath(to.url.path())).find(lowercased(insidePath)) != std::string::npos;
    }
    return inside ? CommandApplyResult::accept : CommandApplyResult::exclude;
}

}  // namespace quester
