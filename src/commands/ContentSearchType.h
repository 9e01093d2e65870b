#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quester {

// The kinds of file that content search can be told to read or to pass over,
// each switched on or off in the settings. The value is the settings row.
enum class ContentSearchType {
    text,
    sourceCode,
    richText,
    spreadsheet,
    pdf,
    zipDirectory,
    zipContents,
    tarDirectory,
    tarContents,
    sqlite,
    json,
    xml,
};

inline constexpr ContentSearchType allContentSearchTypes[] = {
    ContentSearchType::text,        ContentSearchType::sourceCode,   ContentSearchType::richText,
    ContentSearchType::spreadsheet, ContentSearchType::pdf,          ContentSearchType::zipDirectory,
    ContentSearchType::zipContents, ContentSearchType::tarDirectory, ContentSearchType::tarContents,
    ContentSearchType::sqlite,      ContentSearchType::json,         ContentSearchType::xml,
};

// The key under which the setting is stored ("richText").
std::string_view contentSearchTypeId(ContentSearchType type);
// Archive contents, databases, JSON and XML are read only when asked for.
bool contentSearchTypeDefaultEnabled(ContentSearchType type);

// The kind of the file at `path`, by its type as the type table gives it for
// the name, then by a few extensions the table leaves generic; none for a
// file of no such kind (an image, a program), which content search reads
// whatever the settings say.
std::optional<ContentSearchType> classifyContentSearchType(std::string_view path);
// The same from a type identifier and a lowercased extension without the dot.
std::optional<ContentSearchType> classifyContentSearchType(const std::optional<std::string>& type,
                                                           std::string_view extension);

}  // namespace quester
