#include "stores/Preferences.h"

#include <charconv>
#include <cstdio>
#include <cstring>

#include <fmt/core.h>

#include "platform/AtomicFile.h"
#include "platform/FileLock.h"
#include "platform/FileSystem.h"
#include "stores/PreferenceKey.h"
#include "support/AppDirectories.h"
#include "support/LogFunc.h"
#include "support/PathText.h"

namespace quester {
namespace {

using json = nlohmann::json;

std::optional<std::int64_t> parseBuildNumber(std::string_view text) {
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    std::int64_t number = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

std::optional<std::int64_t> asInteger(const json& value) {
    if (value.is_boolean()) return value.get<bool>() ? 1 : 0;
    if (value.is_number_float()) return static_cast<std::int64_t>(value.get<double>());
    if (value.is_number()) return value.get<std::int64_t>();
    if (value.is_string()) return parseBuildNumber(value.get<std::string>());
    return std::nullopt;
}

}  // namespace

Preferences::Preferences(std::string path, NotificationCenter& notificationCenter)
    : storePath(std::move(path)), center(notificationCenter), stored(json::object()), defaults(json::object()) {
    load();
}

Preferences& Preferences::shared() {
    static Preferences* instance = [] {
        auto folder = AppDirectories::configDirectoryPath();
        if (!folder) LOG("no config folder, settings are kept for this run only: " + folder.error().message);
        return new Preferences(folder ? *folder + "/" + fileName : std::string());
    }();
    return *instance;
}

void Preferences::load() {
    if (storePath.empty()) return;
    auto read = readStoredObject();
    if (read) stored.setValue(std::move(read).value());
}

void Preferences::reload() {
    load();
}

Result<json> Preferences::readStoredObject() {
    const auto text = FileSystem::real().readFile(storePath);
    if (text.isNotFound()) return json::object();
    if (!text) return text.error();
    json parsed = json::parse(*text, nullptr, false);
    if (parsed.is_discarded() || !parsed.is_object()) {
        setAsideCorruptFile(parsed.is_discarded() ? "not JSON" : "not a JSON object");
        return json::object();
    }
    return parsed;
}

void Preferences::setAsideCorruptFile(const std::string& reason) {
    std::string corruptPath = storePath + ".corrupt";
    if (Status moved = FileSystem::real().rename(storePath, corruptPath); !moved) {
        LOG(fmt::format("{} is {} and cannot be set aside ({}); defaults stand", storePath, reason,
                        moved.error().message));
        return;
    }
    LOG(fmt::format("{} is {}; set aside as {}, defaults stand", storePath, reason, corruptPath));
}

json Preferences::registeredDefaultsTable() {
    json table = json::object();
    for (const auto& key : PreferenceKey::all())
        if (key.defaultValue) table[key.name] = *key.defaultValue;
    return table;
}

void Preferences::startup(std::string_view buildVersion) {
    LOG(fmt::format("startup, build {}", buildVersion));
    setIsNewBuild(buildVersion);
    registerDefaults(registeredDefaultsTable());
    json oneTime = json::object();
    if (!hasStoredValue("showInMenuBar")) oneTime["showInMenuBar"] = true;
    if (!hasStoredValue("bringToFrontHotKey")) oneTime["bringToFrontHotKey"] = false;
    if (oneTime.empty()) return;
    if (Status saved = setValues(oneTime); !saved)
        LOG("cannot store the first-launch values: " + saved.error().message);
}

void Preferences::registerDefaults(const json& table) {
    defaults.access([&](json& registered) { registered.update(table); });
}

void Preferences::setIsNewBuild(std::string_view buildVersion) {
    auto build = parseBuildNumber(buildVersion);
    if (!build) return;
    Status saved = integerValue("lastVersion") >= *build
                       ? setValue("isNewVersion", false)
                       : setValues(json{{"lastVersion", *build}, {"isNewVersion", true}});
    if (!saved) LOG("cannot store the build check: " + saved.error().message);
}

std::optional<json> Preferences::lookUp(const std::string& key) const {
    auto found = stored.access([&](const json& values) -> std::optional<json> {
        auto it = values.find(key);
        if (it == values.end()) return std::nullopt;
        return *it;
    });
    if (found) return found;
    return defaults.access([&](const json& values) -> std::optional<json> {
        auto it = values.find(key);
        if (it == values.end()) return std::nullopt;
        return *it;
    });
}

bool Preferences::hasStoredValue(const std::string& key) const {
    return stored.access([&](const json& values) { return values.contains(key); });
}

bool Preferences::boolValue(const std::string& key) const {
    auto value = lookUp(key);
    if (!value) return false;
    if (value->is_string()) {
        const auto& text = value->get_ref<const std::string&>();
        return text == "true" || text == "YES" || text == "yes" || asInteger(*value).value_or(0) != 0;
    }
    return asInteger(*value).value_or(0) != 0;
}

std::int64_t Preferences::integerValue(const std::string& key) const {
    auto value = lookUp(key);
    return value ? asInteger(*value).value_or(0) : 0;
}

double Preferences::doubleValue(const std::string& key) const {
    auto value = lookUp(key);
    if (!value) return 0.0;
    if (value->is_number()) return value->get<double>();
    return static_cast<double>(asInteger(*value).value_or(0));
}

std::optional<std::string> Preferences::stringValue(const std::string& key) const {
    auto value = lookUp(key);
    if (!value) return std::nullopt;
    if (value->is_string()) return value->get<std::string>();
    if (value->is_number()) return value->dump();
    return std::nullopt;
}

std::optional<std::vector<std::string>> Preferences::stringList(const std::string& key) const {
    auto value = lookUp(key);
    if (!value || !value->is_array()) return std::nullopt;
    std::vector<std::string> list;
    for (const auto& item : *value) {
        if (!item.is_string()) return std::nullopt;
        list.push_back(item.get<std::string>());
    }
    return list;
}

std::optional<json> Preferences::jsonValue(const std::string& key) const {
    return lookUp(key);
}

std::int64_t Preferences::resultsViewStyle() const {
    std::int64_t style = integerValue("resultsViewStyle");
    return style < 3 ? style : 2;
}

Status Preferences::setValue(const std::string& key, json value) {
    return update([&](json& values) { values[key] = std::move(value); });
}

Status Preferences::setValues(const json& values) {
    if (!values.is_object()) return makeError(ErrorCode::invalidArgument, "preference values must be a JSON object");
    return update([&](json& current) { current.update(values); });
}

Status Preferences::removeValue(const std::string& key) {
    return update([&](json& values) { values.erase(key); });
}

Status Preferences::update(const std::function<void(json& values)>& change, Flush flush) {
    if (storePath.empty()) {
        stored.access(change);
        return Status::success();
    }
    LockGuard guard(saveLock);
    if (Status made = FileSystem::real().createDirectories(parentPath(storePath)); !made) return made;
    auto lock = FileLock::acquire(storePath + ".lock");
    if (!lock) return lock.error();
    auto current = readStoredObject();
    if (!current) return current.error();
    change(*current);
    if (Status saved =
            replaceFileAtomically(storePath, current->dump(2), FileSystem::real(), 0600, MissingFolder::make, flush);
        !saved)
        return saved;
    stored.setValue(std::move(current).value());
    return Status::success();
}

NotificationCenter::Token Preferences::PreferencesDidChangeNotification(std::function<void()> handler) {
    return center.addObserver(DidChangeNotification, std::move(handler));
}

void Preferences::postDidChangeNotification() {
    center.post(DidChangeNotification);
}

}  // namespace quester
