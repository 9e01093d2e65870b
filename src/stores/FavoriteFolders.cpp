#include "stores/FavoriteFolders.h"

#include <algorithm>
#include <cctype>

#include "support/LogFunc.h"
#include "support/PathText.h"

namespace quester {
namespace {

using json = nlohmann::json;
using Pairs = std::map<std::string, std::string>;

Pairs decodePairs(const json& map) {
    Pairs pairs;
    if (!map.is_object()) return pairs;
    for (const auto& [keyword, path] : map.items()) {
        if (path.is_string()) pairs.emplace(keyword, path.get<std::string>());
    }
    return pairs;
}

std::string keywordOf(const std::string& path) {
    std::string name = lastPathComponent(withoutTrailingSlash(path));
    name = name.substr(0, name.find(' '));
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return name;
}

std::string unusedKeyword(std::string keyword, const Pairs& pairs) {
    int counter = 0;
    while (pairs.contains(keyword)) {
        keyword = keyword.substr(0, keyword.find('-')) + "-" + std::to_string(++counter);
    }
    return keyword;
}

}  // namespace

FavoriteFolders::FavoriteFolders(Preferences& preferences, NotificationCenter& center)
    : preferences(preferences), center(center) {}

std::map<std::string, std::string> FavoriteFolders::keyFolderPairs() const {
    return decodePairs(preferences.jsonValue(key).value_or(json()));
}

std::vector<std::pair<std::string, std::string>> FavoriteFolders::displayItems() const {
    const auto pairs = keyFolderPairs();
    return {pairs.begin(), pairs.end()};
}

std::optional<std::string> FavoriteFolders::folderForKeyword(const std::string& keyword) const {
    const auto pairs = keyFolderPairs();
    const auto found = pairs.find(keyword);
    if (found == pairs.end()) return std::nullopt;
    return found->second;
}

Result<std::string> FavoriteFolders::add(const std::string& path, const std::optional<std::string>& name) {
    std::string keyword = name ? *name : keywordOf(path);
    if (keyword.empty()) return makeError(ErrorCode::invalidArgument, "a favourite folder needs a name");
    Status saved = preferences.update([&](json& values) {
        Pairs pairs = decodePairs(values.contains(key) ? values[key] : json());
        keyword = unusedKeyword(keyword, pairs);
        pairs[keyword] = path;
        values[key] = pairs;
    });
    if (!saved) return saved.error();
    center.post(DidChangeNotification);
    return keyword;
}

Status FavoriteFolders::deleteDisplayItem(std::size_t index) {
    const auto items = displayItems();
    if (index >= items.size())
        return makeError(ErrorCode::invalidArgument, "no favourite folder row " + std::to_string(index));
    auto removed = remove(items[index].first);
    if (!removed) return removed.error();
    return Status::success();
}

Result<bool> FavoriteFolders::remove(const std::string& keyword) {
    bool removed = false;
    Status saved = preferences.update([&](json& values) {
        Pairs pairs = decodePairs(values.contains(key) ? values[key] : json());
        removed = pairs.erase(keyword) > 0;
        values[key] = pairs;
    });
    if (!saved) return saved.error();
    if (removed) center.post(DidChangeNotification);
    return removed;
}

std::optional<std::string> FavoriteFolders::downloadsName() const {
    const std::string wanted = preferences.stringValue("RememberedFoldersDownloadsFolderName").value_or("downloads");
    const auto items = displayItems();
    for (const auto& [keyword, path] : items)
        if (keyword == wanted) return keyword;
    for (const auto& [keyword, path] : items)
        if (path.find("download") != std::string::npos) return keyword;
    return std::nullopt;
}

void FavoriteFolders::startup(const std::string& home) {
    if (!preferences.boolValue("firstRememberedItemsLoad")) {
        Status saved = preferences.setValue("firstRememberedItemsLoad", true);
        auto added = add(home + "/Desktop/");
        if (!saved || !added) LOG("cannot store the first favourite folder");
    }
    ensureDownloadsExists(home);
}

void FavoriteFolders::ensureDownloadsExists(const std::string& home) {
    if (downloadsName()) return;
    if (auto added = add(home + "/Downloads/"); !added)
        LOG("cannot add the downloads folder: " + added.error().description());
}

}  // namespace quester
