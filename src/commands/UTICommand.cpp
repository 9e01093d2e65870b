#include "commands/UTICommand.h"

#include <algorithm>

#include "commands/UTIAssistant.h"
#include "language/UTIWords.h"
#include "platform/ExecutableFile.h"
#include "platform/UniformTypeTable.h"
#include "query/SearchResult.h"
#include "support/PathText.h"

namespace quester {

namespace {

// The type identifier a kind word stands for ("image" → "public.image").
const std::string* specialCaseUTIFor(const std::string& word) {
    const auto& table = specialCaseToUTI();
    const auto found = std::find_if(table.begin(), table.end(), [&](const auto& entry) { return entry.first == word; });
    return found == table.end() ? nullptr : &found->second;
}

// "Executable" and "Unix executable" ask what a file is, not what it is called:
// a zero-filled "data.bin" is none, a compiled program without an extension is.
bool isAskedOfTheContent(const UniformTypeTable& table, const std::string& uti) {
    return table.conformsTo("public.unix-executable", uti) && table.conformsTo(uti, "public.executable");
}

// A type that names a program by its name alone (".exe", an AppImage), or the
// file's own execute permission and signature.
bool isExecutableItem(const UniformTypeTable& table, const std::string& path, const std::string& uti) {
    const std::string type = table.typeOfItem(path, false);
    if (type != "public.unix-executable" && table.conformsTo(type, uti)) return true;
    return isExecutableFile(path);
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
    if (uti && !to.isDirectory && isAskedOfTheContent(table, *uti)) {
        return isExecutableItem(table, path, *uti) ? CommandApplyResult::accept : CommandApplyResult::exclude;
    }
    if (uti && table.conformsTo(table.typeOfItem(path, to.isDirectory), *uti)) return CommandApplyResult::accept;
    const Url item(path, to.isDirectory);
    return UTIAssistant::shared().utiInformationIncludesWord(pathExtension(path), item, wantedUTI)
               ? CommandApplyResult::accept
               : CommandApplyResult::exclude;
}

}  // namespace quester
