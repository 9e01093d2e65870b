#pragma once

#include <set>

#include "commands/ContentSearchType.h"
#include "support/Result.h"

namespace quester {

class Preferences;

// Which kinds of file content search reads, kept in the preferences under
// "contentSearchEnabledTypes" as an object from type id to true or false. A
// type the object doesn't name takes its default. Commands read the settings
// once when made, so a change reaches the searches started after it.
class ContentSearchTypeSettings {
public:
    static constexpr const char* preferencesKey = "contentSearchEnabledTypes";

    explicit ContentSearchTypeSettings(Preferences& preferences);
    // The settings of the program's preferences.
    static ContentSearchTypeSettings shared();

    bool isEnabled(ContentSearchType type) const;
    // Writes the whole object back with `type` changed.
    Status setEnabled(bool enabled, ContentSearchType type);
    // Every type switched off now.
    std::set<ContentSearchType> disabledTypes() const;

private:
    Preferences& preferences;
};

}  // namespace quester
