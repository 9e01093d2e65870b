#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "platform/Url.h"
#include "support/Locked.h"

namespace quester {

class UniformTypeTable;

// The kind texts of items ("PDF document", "Folder"), taken from the type
// table by name: the kind column of the results and the kind criterion read
// them. Nothing here reads a file.
//
// Safe from any thread: the table is read-only and the cache of extension
// kinds sits behind its own lock.
class KindStrings {
public:
    // `table` must outlive this object.
    explicit KindStrings(const UniformTypeTable& table);
    KindStrings(const KindStrings&) = delete;
    KindStrings& operator=(const KindStrings&) = delete;

    // Over the built-in type table.
    static KindStrings& shared();

    // The kind text of an item; "Document" when nothing is known of it. With
    // `fileManagerKindFirst` (the user default "useFinderKindField") the file
    // manager's kind comes first, else the cached kind of the extension.
    std::string kindStringForFile(const Url& fileURL, bool fileManagerKindFirst);
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
    const UniformTypeTable& table;
    // The kind text per ASCII-lowercased extension, none for an extension
    // whose type the table doesn't describe.
    Locked<std::unordered_map<std::string, std::optional<std::string>>> kindStringCache;
};

}  // namespace quester
