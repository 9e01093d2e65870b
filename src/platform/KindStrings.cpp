#include "platform/KindStrings.h"

#include "platform/UniformTypeTable.h"
#include "support/PathText.h"

namespace quester {

namespace {

std::string withFirstLetterUppercased(std::string text) {
    if (!text.empty() && text.front() >= 'a' && text.front() <= 'z')
        text.front() = static_cast<char>(text.front() - 'a' + 'A');
    return text;
}

// The table's extensions are ASCII, so an ASCII fold is the key they are found by.
std::string asciiLowercasedKey(std::string_view text) {
    std::string key(text);
    for (char& c : key) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return key;
}

}  // namespace

KindStrings::KindStrings(const UniformTypeTable& table) : table(table) {}

KindStrings& KindStrings::shared() {
    static KindStrings instance(UniformTypeTable::shared());
    return instance;
}

std::string KindStrings::kindStringForFile(const Url& fileURL, bool fileManagerKindFirst) {
    std::optional<std::string> kind;
    if (!fileManagerKindFirst) kind = kindStringForExtension(pathExtension(fileURL.path()));
    if (!kind) kind = finderKindStringForFile(fileURL);
    return kind.value_or("Document");
}

std::optional<std::string> KindStrings::kindStringForExtension(std::string_view ext) {
    if (ext.empty()) return std::nullopt;
    const auto key = asciiLowercasedKey(ext);
    // Looked up and stored under one lock: the table lookup is cheap and never
    // calls out.
    return kindStringCache.access([&](auto& cache) {
        const auto cached = cache.find(key);
        if (cached != cache.end()) return cached->second;
        std::optional<std::string> kind;
        if (const auto type = table.typeForExtension(key)) kind = table.description(*type);
        if (kind) kind = withFirstLetterUppercased(*kind);
        cache.emplace(key, kind);
        return kind;
    });
}

std::string KindStrings::kindStringForFolder(std::string_view path) {
    return kindStringForExtension(pathExtension(path)).value_or("Folder");
}

std::optional<std::string> KindStrings::finderKindStringForFile(const Url& fileURL) const {
    if (fileURL.isDirectory()) return table.description(table.typeOfItem(fileURL.path(), true));
    const auto type = table.typeForExtension(pathExtension(fileURL.path()));
    if (!type) return std::nullopt;
    return table.description(*type);
}

}  // namespace quester
