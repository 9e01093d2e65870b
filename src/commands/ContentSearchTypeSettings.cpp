#include "commands/ContentSearchTypeSettings.h"

#include <string>

#include "stores/Preferences.h"

namespace quester {

ContentSearchTypeSettings::ContentSearchTypeSettings(Preferences& preferences) : preferences(preferences) {}

ContentSearchTypeSettings ContentSearchTypeSettings::shared() {
    return ContentSearchTypeSettings(Preferences::shared());
}

bool ContentSearchTypeSettings::isEnabled(ContentSearchType type) const {
    const auto stored = preferences.jsonValue(preferencesKey);
    const std::string id(contentSearchTypeId(type));
    if (stored && stored->is_object()) {
        const auto value = stored->find(id);
        if (value != stored->end() && value->is_boolean()) return value->get<bool>();
    }
    return contentSearchTypeDefaultEnabled(type);
}

Status ContentSearchTypeSettings::setEnabled(bool enabled, ContentSearchType type) {
    auto stored = preferences.jsonValue(preferencesKey).value_or(nlohmann::json::object());
    if (!stored.is_object()) stored = nlohmann::json::object();
    stored[std::string(contentSearchTypeId(type))] = enabled;
    return preferences.setValue(preferencesKey, std::move(stored));
}

std::set<ContentSearchType> ContentSearchTypeSettings::disabledTypes() const {
    std::set<ContentSearchType> disabled;
    for (auto type : allContentSearchTypes) {
        if (!isEnabled(type)) disabled.insert(type);
    }
    return disabled;
}

}  // namespace quester
