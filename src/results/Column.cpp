#include "results/Column.h"

#include <array>

namespace quester {

namespace {

struct ColumnInfo {
    Column column;
    const char* identifier;
    const char* visibilityPreference;
};

constexpr std::array<ColumnInfo, 11> columnTable{{
    {Column::image, "image", nullptr},
    {Column::name, "name", nullptr},
    {Column::size, "size", "sizeIsVisible"},
    {Column::modDate, "modDate", "dateModifiedIsVisible"},
    {Column::created, "created", "dateCreatedIsVisible"},
    {Column::lastAccessDate, "lastAccessDate", "lastAccessIsVisible"},
    {Column::kind, "kind", "kindIsVisible"},
    {Column::inside, "inside", "insideIsVisible"},
    {Column::tags, "tags", "tagsIsVisible"},
    {Column::path, "path", "pathIsVisible"},
    {Column::rank, "rank", "rankInVisible"},
}};

const ColumnInfo& infoFor(Column column) {
    return columnTable[static_cast<std::size_t>(column)];
}

}  // namespace

const char* identifier(Column column) {
    return infoFor(column).identifier;
}

std::optional<Column> columnFromIdentifier(std::string_view identifier) {
    for (const auto& info : columnTable) {
        if (identifier == info.identifier) return info.column;
    }
    return std::nullopt;
}

std::optional<std::string> visibilityPreference(Column column) {
    const char* key = infoFor(column).visibilityPreference;
    if (key == nullptr) return std::nullopt;
    return std::string(key);
}

const std::vector<Column>& allColumns() {
    static const std::vector<Column> columns = [] {
        std::vector<Column> list;
        for (const auto& info : columnTable) list.push_back(info.column);
        return list;
    }();
    return columns;
}

}  // namespace quester
