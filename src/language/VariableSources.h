#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace quester {

// Where the variables that name the user's own things get their lists. Each is
// asked at parse time, on the parsing thread, and must be cheap and thread safe;
// an unset function reads as an empty list. The stores that own these lists
// (remembered folders, scripts folder, shortcuts, known tags) fill them in.
struct VariableSources {
    // keyword → folder path, for "~remembered".
    std::function<std::vector<std::pair<std::string, std::string>>()> rememberedFolders;
    // Paths of the scripts in the scripts folder, in listing order, for "~scriptName".
    std::function<std::vector<std::string>()> scriptPaths;
    // Names of the stored shortcuts, for "~scriptName".
    std::function<std::vector<std::string>()> shortcutNames;
    // Tag names seen so far, for "~tagCompletor".
    std::function<std::vector<std::string>()> knownTags;
};

}  // namespace quester
