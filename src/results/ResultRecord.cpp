#include "results/ResultRecord.h"

#include <algorithm>
#include <ctime>

#include "platform/ItemAttributes.h"
#include "support/Logger.h"
#include "support/PathText.h"
#include "support/Utf8Text.h"

namespace quester {

namespace {

const char* typeName(UINode::Kind kind) {
    switch (kind) {
        case UINode::Kind::folder:
            return "folder";
        case UINode::Kind::package:
            return "package";
        default:
            return "file";
    }
}

// UTC, to the second: "2024-05-01T12:30:00Z"; null for an unknown date.
nlohmann::ordered_json isoDate(std::int64_t seconds) {
    if (seconds == 0) return nullptr;
    const auto time = static_cast<std::time_t>(seconds);
    std::tm utc{};
    if (gmtime_r(&time, &utc) == nullptr) return nullptr;
    char text[32];
    if (std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc) == 0) return nullptr;
    return text;
}

std::string base64(std::string_view bytes) {
    static constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
        std::uint32_t group = 0;
        for (std::size_t j = 0; j < 3; ++j) {
            group = (group << 8) | (j < count ? static_cast<unsigned char>(bytes[i + j]) : 0u);
        }
        for (std::size_t j = 0; j < 4; ++j) {
            text += j <= count ? alphabet[(group >> (18 - 6 * j)) & 0x3f] : '=';
        }
    }
    return text;
}

// A found line's title is "location:  snippet"; the record keeps the two apart.
nlohmann::ordered_json foundRecord(const FoundItem& item) {
    const std::string prefix = item.location + ":  ";
    const bool prefixed = !item.location.empty() && item.title.rfind(prefix, 0) == 0;
    nlohmann::ordered_json found;
    found["location"] = item.location;
    found["snippet"] = prefixed ? item.title.substr(prefix.size()) : item.title;
    return found;
}

}  // namespace

nlohmann::ordered_json ResultRecord::of(const UINode& row) {
    const UINode::Changable changes = row.dynamic();
    const std::string path = row.fileURL().path();
    const bool isFolder = changes.kind == UINode::Kind::folder || changes.kind == UINode::Kind::package;
    nlohmann::ordered_json record;
    record["path"] = path;
    record["name"] = lastPathComponent(path);
    record["folder"] = parentPath(path);
    record["type"] = typeName(changes.kind);
    record["kind"] = changes.displayKind;
    record["size"] = isFolder ? nlohmann::ordered_json(nullptr) : nlohmann::ordered_json(changes.totalSize);
    record["modified"] = isoDate(row.modificationDate);
    record["created"] = isoDate(row.creationDate);
    record["accessed"] = isoDate(row.lastAccessDate);
    record["tags"] = changes.hasLoadedTagNames ? changes.tagNames : ItemAttributes::tagNames(path);
    const UINode::FoundLines* found = row.contentSearchResults();
    if (found && !found->empty()) {
        auto& lines = record["lines"] = nlohmann::ordered_json::array();
        for (const auto& line : *found) lines.push_back(line.first);
    }
    auto foundItems = nlohmann::ordered_json::array();
    for (const auto& child : row.children()) {
        if (const FoundItem* item = child->foundItem()) foundItems.push_back(foundRecord(*item));
    }
    if (!foundItems.empty()) record["found"] = std::move(foundItems);
    if (!isValidUTF8(path)) record["pathBase64"] = base64(path);
    record["online"] = !row.isOffline();
    return record;
}

std::string ResultRecord::jsonLine(const UINode& row) {
    return of(row).dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

}  // namespace quester
