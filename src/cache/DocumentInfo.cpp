#include "cache/DocumentInfo.h"

#include <nlohmann/json.hpp>

namespace quester {

namespace {

constexpr const char* fileScheme = "file://";

}  // namespace

std::string DocumentInfo::toJSON() const {
    nlohmann::json object = {
        {"lastUpdated", lastUpdated},
        {"lastIndexMode", static_cast<std::int64_t>(lastIndexMode)},
        {"isDirty", isDirty},
    };
    if (suggestedTarget) object["suggestedTarget"] = fileScheme + *suggestedTarget;
    if (numberOfFSItems) object["numberOfFSItems"] = *numberOfFSItems;
    if (diskKey) object["diskKey"] = *diskKey;
    return object.dump();
}

Result<DocumentInfo> DocumentInfo::fromJSON(std::string_view text) {
    nlohmann::json object = nlohmann::json::parse(text, nullptr, false);
    auto bad = [](const std::string& why) { return makeError(ErrorCode::corrupt, "the cache's own record " + why); };
    if (!object.is_object()) return bad("is not a JSON object");
    const auto lastUpdated = object.find("lastUpdated");
    const auto mode = object.find("lastIndexMode");
    const auto dirty = object.find("isDirty");
    if (lastUpdated == object.end() || !lastUpdated->is_number() || mode == object.end() ||
        !mode->is_number_integer() || dirty == object.end() || !dirty->is_boolean())
        return bad("lacks lastUpdated, lastIndexMode or isDirty");
    std::optional<ContentIndexMode> indexMode = contentIndexModeFromRaw(mode->get<std::int64_t>());
    if (!indexMode) return bad("names an unknown mode");
    DocumentInfo info;
    info.lastUpdated = lastUpdated->get<double>();
    info.lastIndexMode = *indexMode;
    info.isDirty = dirty->get<bool>();
    if (auto target = object.find("suggestedTarget"); target != object.end() && target->is_string()) {
        std::string url = target->get<std::string>();
        info.suggestedTarget = url.starts_with(fileScheme) ? url.substr(std::string_view(fileScheme).size()) : url;
    }
    if (auto count = object.find("numberOfFSItems"); count != object.end() && count->is_number_integer())
        info.numberOfFSItems = count->get<std::int64_t>();
    if (auto key = object.find("diskKey"); key != object.end() && key->is_string())
        info.diskKey = key->get<std::string>();
    return info;
}

}  // namespace quester
