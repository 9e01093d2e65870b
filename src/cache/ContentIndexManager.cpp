#include "cache/ContentIndexManager.h"

#include <chrono>
#include <ctime>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "cache/DataConvertible.h"
#include "platform/AtomicFile.h"
#include "platform/FileSystem.h"
#include "platform/Url.h"
#include "stores/Preferences.h"
#include "support/LogFunc.h"

namespace quester {

namespace {

constexpr const char* fileScheme = "file://";

std::string lastComponent(const std::string& path) {
    std::size_t end = path.find_last_not_of('/');
    if (end == std::string::npos) return "/";
    std::size_t start = path.rfind('/', end);
    start = start == std::string::npos ? 0 : start + 1;
    return path.substr(start, end - start + 1);
}

std::pair<std::string, std::string> splitExtension(const std::string& name) {
    std::size_t dot = name.rfind('.');
    if (dot == std::string::npos || dot == 0) return {name, ""};
    return {name.substr(0, dot), name.substr(dot + 1)};
}

bool exists(const std::string& path) {
    return !FileSystem::real().status(path, false).isNotFound();
}

double secondsSince2001Now() {
    double unix = std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
    return ReferenceDate::fromUnixSeconds(unix).secondsSince2001;
}

bool isToday(double secondsSince2001) {
    auto dayOf = [](double unixSeconds) {
        std::time_t time = static_cast<std::time_t>(unixSeconds);
        std::tm local{};
        localtime_r(&time, &local);
        return std::make_tuple(local.tm_year, local.tm_yday);
    };
    return dayOf(ReferenceDate{secondsSince2001}.unixSeconds()) ==
           dayOf(ReferenceDate{secondsSince2001Now()}.unixSeconds());
}

nlohmann::json savedInfo(const ContentIndex& index) {
    nlohmann::json entry = {
        {"displayName", index.displayName()},
        {"localDBFilePath", index.localDBFile()},
        {"updatesEvery", static_cast<std::int64_t>(index.updatesEvery())},
        {"indexMode", static_cast<std::int64_t>(index.documentInfo().lastIndexMode)},
        {"uuidString", index.id().toString()},
    };
    if (index.targetURL()) entry["targetURL"] = fileScheme + *index.targetURL();
    return entry;
}

std::optional<std::string> pathOfURL(const nlohmann::json& entry, const char* key) {
    auto found = entry.find(key);
    if (found == entry.end() || !found->is_string()) return std::nullopt;
    std::string text = found->get<std::string>();
    return text.starts_with(fileScheme) ? text.substr(std::string_view(fileScheme).size()) : text;
}

}  // namespace

ContentIndexManager::ContentIndexManager(Preferences& preferences, std::string folder)
    : preferences(preferences), cacheFolder(std::move(folder)) {}

void ContentIndexManager::clearOpenCrashBreadcrumb(const std::string& file) {
    (void)FileSystem::real().removeFile(breadcrumbPath(file));
}

Result<std::unique_ptr<ContentIndex>> ContentIndexManager::openListed(ContentIndex::Setup setup, bool& needsSaving) {
    const std::string file = setup.localDBFile;
    if (exists(breadcrumbPath(file))) {
        needsSaving = true;
        bool quarantined = quarantineCorruptCache(file);
        clearOpenCrashBreadcrumb(file);
        if (!quarantined) return makeError(ErrorCode::ioError, "cannot set aside " + file);
    }
    (void)replaceFileAtomically(breadcrumbPath(file), "", FileSystem::real(), 0644);
    Result<std::unique_ptr<ContentIndex>> made = ContentIndex::make(std::move(setup));
    clearOpenCrashBreadcrumb(file);
    return made;
}

void ContentIndexManager::load() {
    caches.clear();
    std::optional<std::string> text = preferences.stringValue(savedIndexInfoKey);
    if (!text) return;
    nlohmann::json list = nlohmann::json::parse(*text, nullptr, false);
    if (!list.is_array()) {
        LOG("SavedIndexInfo is not a JSON array; no caches");
        return;
    }
    bool needsSaving = false;
    for (const nlohmann::json& entry : list) {
        if (!entry.is_object() || !entry.contains("localDBFilePath") || !entry["localDBFilePath"].is_string()) continue;
        ContentIndex::Setup setup;
        setup.localDBFile = entry["localDBFilePath"].get<std::string>();
        setup.targetURL = pathOfURL(entry, "targetURL");
        if (auto uuid = entry.find("uuidString"); uuid != entry.end() && uuid->is_string())
            setup.id = Uuid::fromString(uuid->get<std::string>());
        if (!setup.id) needsSaving = true;
        if (auto name = entry.find("displayName"); name != entry.end() && name->is_string())
            setup.displayName = name->get<std::string>();
        std::int64_t raw = entry.value("updatesEvery", std::int64_t{500});
        setup.updatesEvery = cachingUpdatesTagFromRaw(raw).value_or(CachingUpdatesTag::week);
        Result<std::unique_ptr<ContentIndex>> made = openListed(std::move(setup), needsSaving);
        if (!made) {
            LOG("cache left out: " + made.error().description());
            continue;
        }
        caches.push_back(std::move(*made));
    }
    if (needsSaving) (void)save();
}

Status ContentIndexManager::save() const {
    nlohmann::json list = nlohmann::json::array();
    for (const auto& index : caches) list.push_back(savedInfo(*index));
    Status stored = preferences.setValue(savedIndexInfoKey, list.dump());
    if (stored) preferences.postDidChangeNotification();
    return stored;
}

ContentIndex* ContentIndexManager::cacheNamed(const std::string& name) const {
    for (const auto& index : caches)
        if (index->displayName() == name) return index.get();
    return nullptr;
}

std::string ContentIndexManager::suggestNiceName(const std::string& target) {
    auto [name, extension] = splitExtension(lastComponent(target));
    if (extension == cacheExtension) return name;
    // The root file system's name is "/", which names nothing.
    std::string volume = Url(target, true).volumeName().value_or("/");
    if (volume == "/") volume.clear();
    if (name == "/") return volume.empty() ? "Boot Drive" : volume;
    if (volume.empty() || volume == name || Url(target, true).disk().path() == "/") return lastComponent(target);
    return lastComponent(target) + " on " + volume;
}

Result<std::string> ContentIndexManager::newLocalIndex(const std::string& niceName) const {
    std::string candidate = fmt::format("{}/{}.{}", cacheFolder, niceName, cacheExtension);
    if (!exists(candidate)) return candidate;
    for (int suffix = 1; suffix <= maxNameSuffix; ++suffix) {
        candidate = fmt::format("{}/{}-{}.{}", cacheFolder, niceName, suffix, cacheExtension);
        if (!exists(candidate)) return candidate;
    }
    return makeError(ErrorCode::invalidArgument, "no free cache file name for " + niceName);
}

Result<ContentIndex*> ContentIndexManager::newIndex(const std::string& target, const std::string& displayName,
                                                    ContentIndexMode mode, CachingUpdatesTag updatesEvery) {
    if (cacheNamed(displayName))
        return makeError(ErrorCode::invalidArgument, "a cache named " + displayName + " exists");
    if (Status made = FileSystem::real().createDirectories(cacheFolder); !made) return made.error();
    Result<std::string> file = newLocalIndex(displayName);
    if (!file) return file.error();
    Result<std::unique_ptr<ContentIndex>> index =
        ContentIndex::make({*file, target, std::nullopt, displayName, updatesEvery});
    if (!index) return index.error();
    (*index)->mutableDocumentInfo().lastIndexMode = mode;
    if (Status saved = (*index)->saveDocumentInfo(); !saved) return saved.error();
    caches.push_back(std::move(*index));
    if (Status saved = save(); !saved) return saved.error();
    return caches.back().get();
}

Result<ContentIndex*> ContentIndexManager::addExistingIndex(const std::string& dbFile) {
    if (Status made = FileSystem::real().createDirectories(cacheFolder); !made) return made.error();
    std::string name = suggestNiceName(dbFile);
    if (cacheNamed(name)) return makeError(ErrorCode::invalidArgument, "a cache named " + name + " exists");
    Result<std::string> local = newLocalIndex(name);
    if (!local) return local.error();
    // The library's own copy, read-only on the original: it reads the file as
    // a store (refusing one that isn't) and writes a compact copy.
    Result<std::shared_ptr<Environment>> original =
        Environment::open(dbFile, Environment::readOnly | Environment::noLock | Environment::noSubDir,
                          SimpleLMDB::maxDBs, std::nullopt, SimpleLMDB::mapSize);
    if (!original) return original.error();
    if (Status copied = (*original)->copyCompact(*local); !copied) return copied.error();
    Result<std::unique_ptr<ContentIndex>> index =
        ContentIndex::make({*local, std::nullopt, std::nullopt, name, CachingUpdatesTag::never});
    if (!index) {
        (void)FileSystem::real().removeFile(*local);
        return index.error();
    }
    caches.push_back(std::move(*index));
    if (Status saved = save(); !saved) return saved.error();
    return caches.back().get();
}

Status ContentIndexManager::remove(ContentIndex& index) {
    (void)FileSystem::real().removeFile(index.localDBFile());
    std::erase_if(caches, [&](const auto& listed) { return listed.get() == &index; });
    return save();
}

CachingUpdatesTag ContentIndexManager::updateTiming(const ContentIndex& index) const {
    if (index.updatesEvery() != CachingUpdatesTag::defaultTiming) return index.updatesEvery();
    return cachingUpdatesTagFromRaw(preferences.integerValue("updateCachesEvery"))
        .value_or(CachingUpdatesTag::defaultTiming);
}

bool ContentIndexManager::isDue(const ContentIndex& index) const {
    if (!preferences.boolValue("diskCatalogCaching")) return false;
    if (index.state() != ContentIndex::ContentIndexLMDBState::none) return false;
    CachingUpdatesTag tag = updateTiming(index);
    double lastUpdated = index.documentInfo().lastUpdated;
    if (tag == CachingUpdatesTag::never) return false;
    if (tag == CachingUpdatesTag::day && !isToday(lastUpdated)) return true;
    if (tag == CachingUpdatesTag::appRestart) return true;
    std::optional<std::int64_t> seconds = cachingUpdatesSeconds(tag);
    return seconds && secondsSince2001Now() - lastUpdated > static_cast<double>(*seconds);
}

}  // namespace quester
