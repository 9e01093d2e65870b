#include "stores/IgnoreItems.h"

#include <algorithm>
#include <cctype>

#include "stores/StoredList.h"
#include "support/LogFunc.h"
#include "support/PathText.h"

namespace quester {
namespace {

using json = nlohmann::json;

constexpr std::string_view kVolumesPrefix = "/Volumes/";

std::vector<IgnoreItem> makeItems(const std::vector<std::string>& texts, IgnoreItemType type) {
    std::vector<IgnoreItem> items;
    items.reserve(texts.size());
    for (const auto& text : texts) items.push_back({type, Uuid::random(), text});
    return items;
}

std::vector<std::string> textsOf(const std::vector<IgnoreItem>& items) {
    std::vector<std::string> texts;
    texts.reserve(items.size());
    for (const auto& item : items) texts.push_back(item.text);
    return texts;
}

std::vector<std::string> storedFolders(const json& values) {
    auto folders = decodeStoredTexts(storedValue(values, IgnoreItems::foldersKey));
    for (auto& folder : folders)
        if (folder.starts_with(kVolumesPrefix)) folder.erase(0, kVolumesPrefix.size());
    return folders;
}

std::string withoutPunctuationAndSpace(const std::string& text) {
    std::string kept;
    for (char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (!std::ispunct(byte) && !std::isspace(byte)) kept += c;
    }
    return kept;
}

std::vector<IgnoreItem> sortedByText(std::vector<IgnoreItem> items) {
    std::stable_sort(items.begin(), items.end(), [](const auto& a, const auto& b) { return a.text < b.text; });
    return items;
}

bool contains(const std::vector<std::string>& texts, const std::string& text) {
    return std::find(texts.begin(), texts.end(), text) != texts.end();
}

}  // namespace

IgnoreItems::IgnoreItems(Preferences& preferences) : preferences(preferences) {
    load();
}

void IgnoreItems::load() {
    const json values{{foldersKey, preferences.jsonValue(foldersKey).value_or(json())},
                      {extensionsKey, preferences.jsonValue(extensionsKey).value_or(json())}};
    components = makeItems(storedFolders(values), IgnoreItemType::pathComponent);
    extensions = makeItems(decodeStoredTexts(values[extensionsKey]), IgnoreItemType::pathExtension);
}

bool IgnoreItems::contains(const std::string& path) const {
    return std::any_of(components.begin(), components.end(), [&](const auto& item) { return item.text == path; });
}

bool IgnoreItems::containsExtension(const std::string& extension) const {
    return std::any_of(extensions.begin(), extensions.end(), [&](const auto& item) { return item.text == extension; });
}

bool IgnoreItems::includesFolder(const std::string& path) const {
    const auto pieces = quester::pathComponents(path);
    for (const auto& item : components) {
        const bool matches = item.text.find('/') != std::string::npos
                                 ? path.find(item.text) != std::string::npos
                                 : std::find(pieces.begin(), pieces.end(), item.text) != pieces.end();
        if (matches) return true;
    }
    if (extensions.empty()) return false;
    return std::any_of(pieces.begin(), pieces.end(),
                       [&](const std::string& piece) { return containsExtension(pathExtension(piece)); });
}

bool IgnoreItems::ignores(const std::string& path) const {
    if (components.empty() && extensions.empty()) return false;
    return includesFolder(path) || containsExtension(pathExtension(path));
}

std::vector<IgnoreItem> IgnoreItems::itemsForDisplay() const {
    std::vector<IgnoreItem> rows{{IgnoreItemType::displayGroup, Uuid::random(), "Extensions"}};
    for (auto item : sortedByText(extensions)) {
        item.text = "." + item.text;
        rows.push_back(std::move(item));
    }
    rows.push_back({IgnoreItemType::displayGroup, Uuid::random(), "Files & Folders"});
    for (auto& item : sortedByText(components)) rows.push_back(std::move(item));
    return rows;
}

Status IgnoreItems::changeDisplayItemValue(std::size_t index, const std::string& newValue, bool shouldSave) {
    const auto rows = itemsForDisplay();
    if (index >= rows.size())
        return makeError(ErrorCode::invalidArgument, "no ignore list row " + std::to_string(index));
    const Uuid id = rows[index].id;
    auto sameID = [&](const IgnoreItem& item) { return item.id == id; };
    if (auto found = std::find_if(components.begin(), components.end(), sameID); found != components.end())
        found->text = newValue;
    if (auto found = std::find_if(extensions.begin(), extensions.end(), sameID); found != extensions.end())
        found->text = withoutPunctuationAndSpace(newValue);
    return shouldSave ? save() : Status::success();
}

Status IgnoreItems::change(
    const std::function<void(std::vector<std::string>& folders, std::vector<std::string>& extensions)>& edit) {
    Status saved = preferences.update([&](json& values) {
        auto folders = storedFolders(values);
        auto storedExtensions = decodeStoredTexts(storedValue(values, extensionsKey));
        edit(folders, storedExtensions);
        values[foldersKey] = folders;
        values[extensionsKey] = storedExtensions;
    });
    if (saved) load();
    return saved;
}

Status IgnoreItems::add(const std::string& path) {
    if (path.empty()) return makeError(ErrorCode::invalidArgument, "an empty name ignores nothing");
    return change([&](std::vector<std::string>& folders, std::vector<std::string>&) {
        if (!quester::contains(folders, path)) folders.push_back(path);
    });
}

Status IgnoreItems::addFileExtension(const std::string& fileExtension) {
    const std::string text = fileExtension.starts_with('.') ? fileExtension.substr(1) : fileExtension;
    if (text.empty()) return Status::success();
    return change([&](std::vector<std::string>&, std::vector<std::string>& stored) {
        if (!quester::contains(stored, text)) stored.push_back(text);
    });
}

Status IgnoreItems::remove(const Uuid& id) {
    std::erase_if(components, [&](const auto& item) { return item.id == id; });
    std::erase_if(extensions, [&](const auto& item) { return item.id == id; });
    return save();
}

Result<bool> IgnoreItems::removeText(IgnoreItemType type, const std::string& text) {
    const bool isExtension = type == IgnoreItemType::pathExtension;
    const std::string bare = isExtension && text.starts_with('.') ? text.substr(1) : text;
    bool removed = false;
    Status saved = change([&](std::vector<std::string>& folders, std::vector<std::string>& stored) {
        removed = std::erase(isExtension ? stored : folders, bare) > 0;
    });
    if (!saved) return saved.error();
    return removed;
}

Status IgnoreItems::save() {
    return preferences.setValues(json{{foldersKey, textsOf(components)}, {extensionsKey, textsOf(extensions)}});
}

void IgnoreItems::startup() {
    if (preferences.boolValue("firstIgnoreItemsLoad")) return;
    if (Status saved = preferences.setValue("firstIgnoreItemsLoad", true); !saved)
        LOG("cannot store the first ignore list load: " + saved.error().description());
}

}  // namespace quester
