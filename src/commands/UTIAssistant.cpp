#include "commands/UTIAssistant.h"

#include <array>
#include <utility>
#include <vector>

#include "language/UnicodeText.h"
#include "platform/UniformTypeTable.h"
#include "stores/Preferences.h"
#include "support/PathText.h"

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

}  // namespace

UTIAssistant::UTIAssistant(Preferences& preferences, const UniformTypeTable& table)
    : preferences(preferences), table(table), kindStrings(table) {}

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
    if (mentions(lowercased(kindStrings.kindStringForFile(fileURL, preferences.boolValue(kUseFinderKindField))))) {
        return true;
    }
    const auto type = table.typeForExtension(ext);
    if (!type) return false;
    for (const auto& text : typeInformation(*table.declaration(*type))) {
        if (mentions(text)) return true;
    }
    return false;
}

}  // namespace quester
