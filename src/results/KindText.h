#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quester {

// The kind column's text, guessed from the name alone so that a row costs no
// file-system call: a built-in table of extensions ("pdf" → "PDF Document").
class KindText {
public:
    // The kind of an extension in any case; none for an empty or unknown one.
    static std::optional<std::string> kindStringForExtension(std::string_view extension);
    // The kind of a file by its path's extension, "Document" when unknown.
    static std::string kindStringForFile(std::string_view path);
    // The kind of a folder: its extension's kind when it has one, else "Folder".
    static std::string kindStringForFolder(std::string_view path);
};

}  // namespace quester
