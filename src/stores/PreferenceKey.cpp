#include "stores/PreferenceKey.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdlib>

namespace quester {
namespace {

using json = nlohmann::json;
using Type = PreferenceKey::Type;

PreferenceKey registered(std::string name, json value) {
    Type type = value.is_boolean()          ? Type::truthValue
                : value.is_number_integer() ? Type::integer
                : value.is_number()         ? Type::number
                                            : Type::text;
    return PreferenceKey{std::move(name), type, std::move(value)};
}

std::vector<PreferenceKey> makeTable() {
    std::vector<PreferenceKey> table{
        registered("hasLaunchedBefore", false),
        registered("moveItemsStartingWithQueryToTop", false),
        registered("firstIgnoreItemsLoad", false),
        registered("firstRememberedItemsLoad", false),
        registered("useFinderKindField", false),
        registered("dateModifiedIsVisible", true),
        registered("dateCreatedIsVisible", false),
        registered("lastAccessIsVisible", false),
        registered("sizeIsVisible", true),
        registered("kindIsVisible", true),
        registered("insideIsVisible", true),
        registered("tagsIsVisible", false),
        registered("historyEnabled", true),
        registered("showAppsFoundAnywhere", false),
        registered("lastSearchlocationPopupSelectedItemName", "in home"),
        registered("closeSearchWindowAfterOpening", false),
        registered("sidebarShouldShowSidebar", true),
        registered("sidebarShouldShowSavedSearches", true),
        registered("sidebarShouldShowChanged", true),
        registered("sidebarShouldShowHistory", false),
        registered("sidebarShouldShowQuickFolders", true),
        registered("sidebarShouldShowPopular", false),
        registered("allowNetworkSearches", false),
        registered("checkForLocalConnections", true),
        registered("diskCatalogCaching", false),
        registered("nettworkDiskCachingOnly", true),
        registered("updateCachesEvery", 500),
        registered("fileContentCaching", false),
        registered("fileContentCachingAskToAdd", false),
        registered("resultsViewStyle", 2),
        registered("iconSizeSlider", 290.0),
        registered("recentItemsMaxCount", 10),
        registered("historyMaxCount", 20),
        registered("hoverPreviews", false),
        registered("listTextSize", 12),
        registered("quitAfterLastSearchWindowGone", false),
        registered("fileContentCachingTimeUpdatesEnabled", false),
        registered("sidebarShouldShowDownloads", true),
        // Writes the daily log of every run, as the log window does while open.
        registered("loggingEnabled", false),
    };
    for (const char* name :
         {"showInMenuBar", "bringToFrontHotKey", "isNewVersion", "searchInsideSystemAndApps", "SearchAllFileTypes",
          "diacriticInsensitiveSearch", "startSearchesAutomatically", "rankInVisible", "moveFoldersToTop",
          "currentColumnReversed", "sizeColumnDefaultWidthMigrated", "enableCachingOptions", "MediaServer:enabled",
          "inspectorShouldShow", "lastSearchlocationPopupSelectedItemNameWasFinderSelection",
          "shownFullDiskAccessAdvice_1"}) {
        table.push_back({name, Type::truthValue, std::nullopt});
    }
    for (const char* name : {"lastVersion", "historyVersion", "QXHTTPServer:lastPort"})
        table.push_back({name, Type::integer, std::nullopt});
    // The time of day of the daily cache run ("HH:MM"), and when it last started (seconds since 2001).
    table.push_back({"fileContentCachingUpdateTime", Type::text, std::nullopt});
    table.push_back({"fileContentCachingUpdateLastTime", Type::number, std::nullopt});
    for (const char* name :
         {"highlightedTableColumn", "lastSearchlocationPath", "lastBuiltInSearchlocationPopupSelectedItemName",
          "previousSearchlocationPopupSelectedItemName", "RememberedFoldersDownloadsFolderName", "MediaServer:name",
          "ResultsExporter:FileName"}) {
        table.push_back({name, Type::text, std::nullopt});
    }
    return table;
}

std::string lowercased(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::optional<bool> truthValue(const std::string& text) {
    const std::string lowered = lowercased(text);
    if (lowered == "true" || lowered == "yes" || lowered == "on" || lowered == "1") return true;
    if (lowered == "false" || lowered == "no" || lowered == "off" || lowered == "0") return false;
    return std::nullopt;
}

std::optional<std::int64_t> wholeNumber(const std::string& text) {
    std::string_view digits(text);
    if (digits.starts_with('+')) digits.remove_prefix(1);
    std::int64_t value = 0;
    auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (digits.empty() || error != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
    return value;
}

std::optional<double> decimalNumber(const std::string& text) {
    if (text.empty() || std::isspace(static_cast<unsigned char>(text.front()))) return std::nullopt;
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (end != text.c_str() + text.size() || !std::isfinite(value)) return std::nullopt;
    return value;
}

}  // namespace

const std::vector<PreferenceKey>& PreferenceKey::all() {
    static const std::vector<PreferenceKey> table = makeTable();
    return table;
}

const PreferenceKey* PreferenceKey::find(std::string_view name) {
    const auto& table = all();
    auto found = std::find_if(table.begin(), table.end(), [&](const PreferenceKey& key) { return key.name == name; });
    return found == table.end() ? nullptr : &*found;
}

std::string PreferenceKey::typeDescription(Type type) {
    switch (type) {
        case Type::truthValue:
            return "a truth value (true or false)";
        case Type::integer:
            return "a whole number";
        case Type::number:
            return "a number";
        case Type::text:
            return "text";
    }
    return "text";
}

Result<json> PreferenceKey::parse(const std::string& text) const {
    std::optional<json> value;
    switch (type) {
        case Type::truthValue:
            if (auto truth = truthValue(text)) value = *truth;
            break;
        case Type::integer:
            if (auto number = wholeNumber(text)) value = *number;
            break;
        case Type::number:
            if (auto number = decimalNumber(text)) value = *number;
            break;
        case Type::text:
            value = text;
            break;
    }
    if (value) return *value;
    return makeError(ErrorCode::invalidArgument, name + " takes " + typeDescription(type) + ", not '" + text + "'");
}

}  // namespace quester
