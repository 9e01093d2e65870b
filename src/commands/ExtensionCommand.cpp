#include "commands/ExtensionCommand.h"

#include "language/UnicodeText.h"
#include "query/SearchResult.h"
#include "support/PathText.h"

namespace quester {

CommandPtr ExtensionCommand::create(std::string_view commandName, const VariableArguments& args, const TemplateFlags&) {
    const auto* extension = argumentAt<std::string>(args, 0);
    if (!extension) return nullptr;
    return std::make_shared<ExtensionCommand>(*extension, commandName != "extension");
}

ExtensionCommand::ExtensionCommand(std::string_view extension, bool isNot)
    : wantedFileNameExtension(lowercased(extension.starts_with('.') ? extension.substr(1) : extension)), isNot(isNot) {}

std::string ExtensionCommand::commandToString() const {
    return (isNot ? "not ." : ".") + wantedFileNameExtension;
}

std::string ExtensionCommand::commandExample() const {
    return (isNot ? "not .**" : ".**") + wantedFileNameExtension + "**";
}

CommandApplyResult ExtensionCommand::commandImpApply(SearchResult& to, SearchDataSourceDelegate*,
                                                     const QueryContainer&) {
    bool equal = lowercased(pathExtension(to.url.path())) == wantedFileNameExtension;
    return equal != isNot ? CommandApplyResult::accept : CommandApplyResult::exclude;
}

std::vector<std::string> ExtensionCommand::commandImpExtraSearchStrings() const {
    if (isNot) return {};
    return {wantedFileNameExtension};
}

}  // namespace quester
