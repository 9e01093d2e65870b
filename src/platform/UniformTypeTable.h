#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace quester {

// What the table knows of one uniform type identifier.
struct UniformTypeDeclaration {
    std::string identifier;
    // The direct parents; `UniformTypeTable::conformsTo` walks them further up.
    std::vector<std::string> conformsTo;
    std::string description;
    // Lowercase, without the dot.
    std::vector<std::string> filenameExtensions;
    std::vector<std::string> mimeTypes;
};

// The uniform types this program knows: a built-in table of identifiers, their
// parents, descriptions, filename extensions and MIME types, shaped like the
// well-known identifiers ("public.jpeg" → "public.image" → "public.data" →
// "public.item"). It is ours on purpose: a desktop MIME database would call a
// .docx a zip and an RTF or HTML file plain text.
//
// Built once; every operation is const, so it is safe from any thread.
// Identifiers and extensions compare without regard to ASCII case. Nothing here
// reads a file.
class UniformTypeTable {
public:
    UniformTypeTable();
    UniformTypeTable(const UniformTypeTable&) = delete;
    UniformTypeTable& operator=(const UniformTypeTable&) = delete;

    static const UniformTypeTable& shared();

    // The preferred type for a filename extension (no dot); none when unknown.
    std::optional<std::string> typeForExtension(std::string_view extension) const;
    // Whether `type` is `parent` or lies below it through any chain of parents.
    // Every type conforms to itself, a type the table doesn't know included.
    bool conformsTo(std::string_view type, std::string_view parent) const;
    // The table's entry for `type`; null when the table doesn't know it. The
    // entry lives as long as the table.
    const UniformTypeDeclaration* declaration(std::string_view type) const;
    // The human description of `type` ("PDF document"); none when unknown.
    std::optional<std::string> description(std::string_view type) const;
    // The type of an item by its name alone: "public.folder" for a directory,
    // "com.apple.application-bundle" for a directory ending in ".app", else the
    // type of its extension, and "public.data" for a file of unknown extension.
    std::string typeOfItem(std::string_view path, bool isDirectory) const;
    // Every entry, in the table's order.
    const std::vector<UniformTypeDeclaration>& allDeclarations() const { return declarations; }

private:
    // Looked up by a view: a search asks for the type of every file it reads,
    // and a lowercase name (the usual one) then costs no copy.
    struct TextHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
    };
    template <typename Value>
    using ByText = std::unordered_map<std::string, Value, TextHash, std::equal_to<>>;
    using TextSet = std::unordered_set<std::string, TextHash, std::equal_to<>>;

    void addParentsOf(const std::string& identifier, TextSet& ancestors) const;

    std::vector<UniformTypeDeclaration> declarations;
    // Lowercased identifier → its entry.
    ByText<const UniformTypeDeclaration*> byIdentifier;
    // Lowercased extension → the first entry that names it.
    ByText<const UniformTypeDeclaration*> byExtension;
    // Lowercased identifier → every type it conforms to, itself included.
    ByText<TextSet> ancestorsOf;
};

}  // namespace quester
