#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/KindStrings.h"
#include "platform/Url.h"

namespace quester {

class Preferences;
class UniformTypeTable;

// The kind criterion's question ("is image"): whether anything known of an
// item's type mentions a word. The kind texts themselves are `KindStrings`'.
//
// Safe from any thread. Nothing here reads a file; kinds come from names.
class UTIAssistant {
public:
    // `preferences` and `table` must outlive the assistant.
    UTIAssistant(Preferences& preferences, const UniformTypeTable& table);
    UTIAssistant(const UTIAssistant&) = delete;
    UTIAssistant& operator=(const UTIAssistant&) = delete;

    // The assistant over the user's preferences and the built-in type table.
    static UTIAssistant& shared();

    // Kind words that stand for a broader one: "video" → "movie", "music" →
    // "audio", "pdf" → "com.adobe.pdf" and the like. None for any other word.
    static std::optional<std::string> utiSubstitutions(std::string_view word);

    // Whether the kind text of `fileURL`, or the type declared for `ext` (its
    // parents, description, extensions and MIME types, each without a leading
    // "public."), contains `word` or its substitution. "app" asks only whether
    // `ext` is "app".
    bool utiInformationIncludesWord(std::string_view ext, const Url& fileURL, std::string_view word);

private:
    Preferences& preferences;
    const UniformTypeTable& table;
    KindStrings kindStrings;
};

}  // namespace quester
