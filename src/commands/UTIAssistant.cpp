#include "commands/UTIAssistant.h"

#include <array>
#include <utility>
#include <vector>

#include "language/UnicodeText.h"
#include "platform/PathText.h"
#include "platform/UniformTypeTable.h"
#include "stores/Preferences.h"

namespace quester {

namespace {

constexpr const char* kUseFinderKindField = "useFinderKindField";

constexpr std::array<std::pair<std::string_view, std::string_view>, 5> kUtiSubstitutions{{
    {"video", "movie"},
    {"sound", "audio"},
    {"music", "audio"},
    {"app", "com.apple.application"},
    {"pdf", "com.adobe.pdf"},
}};

std::string withoutPublicPrefix(std::string text) {
    constexpr std::string_view prefix = "public.";
    if (text.starts_with(prefix)) text.erase(0, prefix.size());
    return text;
}

// Everything the declaration tells of a type, lowercased, with "public." cut
// from the front so that "image" is found in "public.image" but an identifier
// such as "public.image" is never found in its own list.
std::vector<std::string> typeInformation(const UniformTypeDeclaration& declaration) {
    std::vector<std::string> texts;
    auto add = [&texts](const std::string& text) { texts.push_back(withoutPublicPrefix(lowercased(text))); };
    for (const auto& parent : declaration.conformsTo) add(parent);
    add(declaration.description);
    for (const auto& extension : declaration.filenameExtensions) add(extension);
    for (const auto& mimeType : declaration.mimeTypes) add(mimeType);
    return texts;
}

std::string withFirstLetterUppercased(std::string text) {
    if (!text.empty() && text.front() >= 'a' && text.front() <= 'z')
        text.front() = static_cast<char>(text.front() - 'a' + 'A');
    return text;
}

}  // namespace

UTIAssistant::UTIAssistant(Preferences& preferences, const UniformTypeTable& table)
    : preferences(preferences), table(table) {}

UTIAssistant& UTIAssistant::shared() {
    static UTIAssistant instance(Preferences::shared(), UniformTypeTable::shared());
    return instance;
}

std::optional<std::string> UTIAssistant::utiSubstitutions(std::string_view word) {
    for (const auto& [from, to] : kUtiSubstitutions) {
        if (from == word) return std::string(to);
    }
    return std::nullopt;
}

bool UTIAssistant::utiInformationIncludesWord(std::string_view ext, const Url& fileURL, std::string_view word) {
    if (word == "app") return lowercased(ext) == "app";
    const auto substitute = utiSubstitutions(word);
    const auto mentions = [&](std::string_view text) {
        return text.find(word) != std::string_view::npos ||
               (substitute && text.find(*substitute) != std::string_view::npos);
    };
    if (mentions(lowercased(kindStringForFile(fileURL)))) return true;
    const auto type = table.typeForExtension(ext);
    if (!type) return false;
    for (const auto& text : typeInformation(*table.declaration(*type))) {
        if (mentions(text)) return true;
    }
    return false;
}

std::string UTIAssistant::kindStringForFile(const Url& fileURL) {
    std::optional<std::string> kind;
    if (!preferences.boolValue(kUseFinderKindField)) kind = kindStringForExtension(pathExtension(fileURL.path()));
    if (!kind) kind = finderKindStringForFile(fileURL);
    return kind.value_or("Document");
}

std::optional<std::string> UTIAssistant::kindStringForExtension(std::string_view ext) {
    if (ext.empty()) return std::nullopt;
    const auto key = lowercased(ext);
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

std::string UTIAssistant::kindStringForFolder(std::string_view path) {
    return kindStringForExtension(pathExtension(path)).value_or("Folder");
}

std::optional<std::string> UTIAssistant::finderKindStringForFile(const Url& fileURL) const {
    if (fileURL.isDirectory()) return table.description(table.typeOfItem(fileURL.path(), true));
    const auto type = table.typeForExtension(pathExtension(fileURL.path()));
    if (!type) return std::nullopt;
    return table.description(*type);
}

}  // namespace quester
