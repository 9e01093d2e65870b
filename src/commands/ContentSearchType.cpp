#include "commands/ContentSearchType.h"

#include <algorithm>
#include <array>
#include <unordered_map>

#include "language/UnicodeText.h"
#include "platform/UniformTypeTable.h"
#include "support/PathText.h"

namespace quester {

namespace {

struct TypeRow {
    std::string_view id;
    bool defaultEnabled;
};

constexpr std::array<TypeRow, 12> rows = {{
    {"text", true},
    {"sourceCode", true},
    {"richText", true},
    {"spreadsheet", true},
    {"pdf", true},
    {"zipDirectory", true},
    {"zipContents", false},
    {"tarDirectory", true},
    {"tarContents", false},
    {"sqlite", false},
    {"json", false},
    {"xml", false},
}};

const TypeRow& rowOf(ContentSearchType type) {
    return rows[static_cast<std::size_t>(type)];
}

bool isOneOf(std::string_view extension, std::initializer_list<std::string_view> extensions) {
    return std::find(extensions.begin(), extensions.end(), extension) != extensions.end();
}

bool isRichText(const UniformTypeTable& types, const std::string& type) {
    for (std::string_view parent :
         {"public.rtf", "public.html", "com.microsoft.word.doc", "org.openxmlformats.wordprocessingml.document",
          "com.apple.iwork.pages.pages", "com.apple.iwork.pages.sffpages", "org.oasis-open.opendocument.text"}) {
        if (types.conformsTo(type, parent)) return true;
    }
    return false;
}

std::optional<ContentSearchType> classifyByExtension(std::string_view extension) {
    if (isOneOf(extension, {"sqlite", "sqlite3", "db"})) return ContentSearchType::sqlite;
    if (extension == "tar") return ContentSearchType::tarDirectory;
    if (extension == "tsx") return ContentSearchType::sourceCode;
    if (isOneOf(extension, {"csv", "emlx", "indd"})) return ContentSearchType::text;
    return std::nullopt;
}

std::optional<ContentSearchType> classifyByConformance(const UniformTypeTable& types, const std::string& type) {
    if (types.conformsTo(type, "com.adobe.pdf")) return ContentSearchType::pdf;
    if (isRichText(types, type)) return ContentSearchType::richText;
    if (types.conformsTo(type, "public.spreadsheet")) return ContentSearchType::spreadsheet;
    if (types.conformsTo(type, "public.json")) return ContentSearchType::json;
    if (types.conformsTo(type, "public.xml")) return ContentSearchType::xml;
    if (types.conformsTo(type, "public.tar-archive")) return ContentSearchType::tarDirectory;
    if (types.conformsTo(type, "public.zip-archive")) return ContentSearchType::zipDirectory;
    return std::nullopt;
}

}  // namespace

std::string_view contentSearchTypeId(ContentSearchType type) {
    return rowOf(type).id;
}

bool contentSearchTypeDefaultEnabled(ContentSearchType type) {
    return rowOf(type).defaultEnabled;
}

// A content search classifies every file it reads, by its extension alone:
// each thread keeps the answers for the extensions it has met, up to a
// bound that a tree of made-up extensions can't push its memory past.
std::optional<ContentSearchType> classifyContentSearchType(std::string_view path) {
    constexpr std::size_t extensionsKept = 4096;
    thread_local std::unordered_map<std::string, std::optional<ContentSearchType>> known;
    std::string extension = lowercased(pathExtension(path));
    if (auto found = known.find(extension); found != known.end()) return found->second;
    const auto type = classifyContentSearchType(UniformTypeTable::shared().typeForExtension(extension), extension);
    if (known.size() < extensionsKept) known.emplace(std::move(extension), type);
    return type;
}

std::optional<ContentSearchType> classifyContentSearchType(const std::optional<std::string>& type,
                                                           std::string_view extension) {
    if (!type) return classifyByExtension(extension);
    const auto& types = UniformTypeTable::shared();
    if (auto byType = classifyByConformance(types, *type)) return byType;
    if (isOneOf(extension, {"sqlite", "sqlite3", "db"})) return ContentSearchType::sqlite;
    if (types.conformsTo(*type, "public.source-code")) return ContentSearchType::sourceCode;
    if (types.conformsTo(*type, "public.plain-text")) return ContentSearchType::text;
    return classifyByExtension(extension);
}

}  // namespace quester
