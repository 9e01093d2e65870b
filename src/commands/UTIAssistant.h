#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "platform/Url.h"
#include "support/Locked.h"

namespace quester {

class Preferences;
class UniformTypeTable;

// Kind questions about items, for the kind criterion ("is image") and the kind
// column of the results: the kind text of a file or an extension, and whether
// anything known of an extension's type mentions a word.
//
// Safe from any thread: the table is read-only and the kind cache sits behind
// its own lock. Nothing here reads a file; kinds come from names.
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
    // The kind text of an item; "Document" when nothing is known of it. With the
    // user default "useFinderKindField" the file manager's kind comes first,
    // else the cached kind of the extension.
    std::string kindStringForFile(const Url& fileURL);
    // The description of the extension's type with its first letter in upper
    // case; none for an empty or unknown extension. Answers are cached, absent
    // ones included.
    std::optional<std::string> kindStringForExtension(std::string_view ext);
    // A folder's kind text: that of its extension ("odd.zip"), else "Folder".
    std::string kindStringForFolder(std::string_view path);
    // The kind a file manager shows for the item. There is no file manager to
    // ask on Linux, so this is the table's description of the item's type by
    // name: "Folder", "Application" for a ".app" folder, the extension's type
    // for a file; none for a file of unknown extension.
    std::optional<std::string> finderKindStringForFile(const Url& fileURL) const;

private:
    Preferences& preferences;
    const UniformTypeTable& table;
    // The kind text per lowercased extension, none for an extension whose type
    // the table doesn't describe; filled by `kindStringForExtension`.
    Locked<std::unordered_map<std::string, std::optional<std::string>>> kindStringCache;
};

}  // namespace quester
