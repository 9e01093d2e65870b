#include "commands/LabelTagManager.h"

#include <algorithm>

#include "platform/ItemAttributes.h"
#include "stores/Preferences.h"

namespace quester {

namespace {

constexpr const char* kTagsKey = "tags";

}  // namespace

LabelTagManager::LabelTagManager(Preferences& preferences)
    : preferences(preferences), tags(preferences.stringList(kTagsKey).value_or(std::vector<std::string>{})) {}

LabelTagManager& LabelTagManager::shared() {
    static LabelTagManager instance(Preferences::shared());
    return instance;
}

std::vector<std::string> LabelTagManager::labels(const std::string& path) {
    auto found = ItemAttributes::tagNames(path);
    if (!found.empty()) tags.access([&](auto& known) { known = merge(found, known); });
    return found;
}

std::vector<std::string> LabelTagManager::tagsForDisplay() const {
    auto sorted = tags.value();
    std::sort(sorted.begin(), sorted.end());
    return sorted;
}

Status LabelTagManager::save() {
    return preferences.setValue(kTagsKey, tags.value());
}

std::vector<std::string> LabelTagManager::merge(const std::vector<std::string>& newer,
                                                const std::vector<std::string>& older) {
    std::vector<std::string> merged = newer;
    for (const auto& tag : older) {
        if (merged.size() >= kRememberedTags) break;
        if (std::find(merged.begin(), merged.end(), tag) == merged.end()) merged.push_back(tag);
    }
    return merged;
}

}  // namespace quester
