#include "commands/UTICommand.h"

#include <algorithm>

#include "commands/UTIAssistant.h"
#include "language/UTIWords.h"
#include "support/PathText.h"
#include "platform/UniformTypeTable.h"
#include "query/SearchResult.h"

namespace quester {

namespace {

// The type identifier a kind word stands for ("image" → "public.image").
const std::string* specialCaseUTIFor(const std::string& word) {
    const auto& table = specialCaseToUTI();
    const auto found = std::find_if(table.begin(), table.end(), [&](const auto& entry) { return entry.first == word; });
    return found == table.end() ? nullptr : &found->second;
}

}  // namespace

CommandPtr UTICommand::create(std::string_view, const VariableArguments& args, const TemplateFlags&) {
    const auto* kind = argumentAt<std::string>(args, 0);
    if (!kind || kind->empty()) return nullptr;
    return std::make_shared<UTICommand>(*kind);
}

CommandApplyResult UTICommand::commandImpApply(SearchResult& to, SearchDataSourceDelegate*, const QueryContainer&) {
    if (wantedUTI == "file" && !to.isDirectory) return CommandApplyResult::accept;
    if (wantedUTI == "folder" && to.isDirectory) return CommandApplyResult::accept;
    const std::string& path = to.url.path();
    const auto& table = UniformTypeTable::shared();
    // A word of the fixed table stands for its type; a type identifier the
    // table declares ("public.image", "com.adobe.pdf") stands for itself, since
    // the kind texts below drop "public." and never hold a type's own name.
    const std::string* uti = specialCaseUTIFor(wantedUTI);
    if (!uti && table.declaration(wantedUTI)) uti = &wantedUTI;
    if (uti && table.conformsTo(table.typeOfItem(path, to.isDirectory), *uti)) return CommandApplyResult::accept;
    const Url item(path, to.isDirectory);
    return UTIAssistant::shared().utiInformationIncludesWord(pathExtension(path), item, wantedUTI)
               ? CommandApplyResult::accept
               : CommandApplyResult::exclude;
}

}  // namespace quester
