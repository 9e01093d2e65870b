#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quester {

// The columns a results list sorts by. The identifier is both the table
// column's identifier and the stored value of "highlightedTableColumn".
enum class Column { image, name, size, modDate, created, lastAccessDate, kind, inside, tags, path, rank };

// "image", "name", "modDate", ...: the case's own name.
const char* identifier(Column column);
// The column of an identifier; none for an unknown one.
std::optional<Column> columnFromIdentifier(std::string_view identifier);
// The preference that shows the column ("sizeIsVisible", ... and the rank
// column's "rankInVisible"); none for the image and name columns, which are
// always shown.
std::optional<std::string> visibilityPreference(Column column);
// Every column, in the order above.
const std::vector<Column>& allColumns();

}  // namespace quester
