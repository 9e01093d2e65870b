#pragma once

#include <string>
#include <vector>

#include "support/Locked.h"
#include "support/Result.h"

namespace quester {

class Preferences;

// The tag names seen on items, newest first, kept across runs in the user
// default "tags" so that the tag criterion can offer them. Thread safe.
class LabelTagManager {
public:
    static constexpr std::size_t kRememberedTags = 50;

    // Loads the known tags from `preferences`, which must outlive the manager.
    explicit LabelTagManager(Preferences& preferences);
    static LabelTagManager& shared();

    // The item's tags; they join the known tags at the front.
    std::vector<std::string> labels(const std::string& path);
    // The known tags in ascending order.
    std::vector<std::string> tagsForDisplay() const;
    Status save();

    // `newer` followed by the entries of `older` it lacks, while the list holds
    // fewer than `kRememberedTags`; `newer` itself is never cut.
    static std::vector<std::string> merge(const std::vector<std::string>& newer, const std::vector<std::string>& older);

private:
    Preferences& preferences;
    Locked<std::vector<std::string>> tags;
};

}  // namespace quester
