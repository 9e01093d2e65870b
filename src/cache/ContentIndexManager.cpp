#include "cache/ContentIndexManager.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "cache/CacheFileCheck.h"
#include "cache/CacheMirror.h"
#include "cache/ContentIndexBuild.h"
#include "cache/DataConvertible.h"
#include "platform/AtomicFile.h"
#include "platform/FSUtilities.h"
#include "platform/FileSystem.h"
#include "platform/Url.h"
#include "stores/Preferences.h"
#include "support/LogFunc.h"
#include "support/PathText.h"

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
    auto bookmarkJSON = [](const Bookmark& mark) -> nlohmann::json {
        return {{"path", mark.path}, {"diskKey", mark.diskKey}, {"pathOnDisk", mark.pathOnDisk}};
    };
    if (std::optional<Bookmark> remote = index.remoteDBBookmark()) entry["remoteDBBookmark"] = bookmarkJSON(*remote);
    if (const std::optional<Bookmark>& target = index.targetBookmark()) entry["targetBookmark"] = bookmarkJSON(*target);
    return entry;
}

// A reference as `savedInfo` writes it; none when absent or malformed (a
// shared cache is then no longer shared, a target is looked for at its path).
std::optional<Bookmark> bookmarkOf(const nlohmann::json& entry, const char* key) {
    auto found = entry.find(key);
    if (found == entry.end() || !found->is_object()) return std::nullopt;
    Bookmark bookmark;
    for (auto [key, field] : {std::pair{"path", &Bookmark::path}, std::pair{"diskKey", &Bookmark::diskKey},
                              std::pair{"pathOnDisk", &Bookmark::pathOnDisk}}) {
        auto value = found->find(key);
        if (value == found->end() || !value->is_string()) return std::nullopt;
        bookmark.*field = value->get<std::string>();
    }
    if (!bookmark.path.starts_with('/') || bookmark.diskKey.empty()) return std::nullopt;
    return bookmark;
}

// Minutes since midnight of "HH:MM"; none for other text.
std::optional<int> minuteOfDay(const std::string& text) {
    unsigned hour = 0, minute = 0;
    char end = 0;
    if (std::sscanf(text.c_str(), "%2u:%2u%c", &hour, &minute, &end) != 2 || hour > 23 || minute > 59)
        return std::nullopt;
    return static_cast<int>(hour * 60 + minute);
}

// The moment of today (in local time, the day of `now`) at `minute` past midnight.
double todayAt(double now, int minute) {
    std::time_t time = static_cast<std::time_t>(ReferenceDate{now}.unixSeconds());
    std::tm local{};
    localtime_r(&time, &local);
    local.tm_hour = minute / 60;
    local.tm_min = minute % 60;
    local.tm_sec = 0;
    local.tm_isdst = -1;
    return ReferenceDate::fromUnixSeconds(static_cast<double>(std::mktime(&local))).secondsSince2001;
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

Result<std::unique_ptr<ContentIndex>> ContentIndexManager::openListed(ContentIndex::Setup setup,
                                                                      std::optional<Bookmark> remote,
                                                                      bool& needsSaving) {
    const std::string file = setup.localDBFile;
    if (exists(breadcrumbPath(file))) {
        needsSaving = true;
        bool quarantined = quarantineCorruptCache(file);
        clearOpenCrashBreadcrumb(file);
        if (!quarantined) return makeError(ErrorCode::ioError, "cannot set aside " + file);
    }
    // Only a crash of this program while it opens the file must leave the
    // mark behind, and the system keeps it through that without a flush.
    (void)replaceFileAtomically(breadcrumbPath(file), "", FileSystem::real(), 0644, MissingFolder::make,
                                Flush::byTheSystem);
    Result<std::unique_ptr<ContentIndex>> made = ContentIndex::make(std::move(setup));
    clearOpenCrashBreadcrumb(file);
    if (!made || !remote) return made;
    (*made)->setRemoteDBBookmark(std::move(remote));
    if (!(*made)->documentInfo().numberOfFSItems) {
        Result<CacheMirror::Action> restored = CacheMirror::mirrorIfNeeded(**made, true, true);
        if (restored && *restored == CacheMirror::Action::pulled) LOG("Restored " + file + " from its shared copy");
    }
    return made;
}

std::optional<std::vector<ContentIndexManager::SavedIndexInfo>> ContentIndexManager::decodeSavedIndexInfo(
    const std::string& text) {
    nlohmann::json list = nlohmann::json::parse(text, nullptr, false);
    if (!list.is_array()) return std::nullopt;
    std::vector<SavedIndexInfo> entries;
    for (const nlohmann::json& entry : list) {
        if (!entry.is_object() || !entry.contains("localDBFilePath") || !entry["localDBFilePath"].is_string()) continue;
        SavedIndexInfo saved;
        ContentIndex::Setup& setup = saved.setup;
        setup.localDBFile = entry["localDBFilePath"].get<std::string>();
        setup.targetURL = pathOfURL(entry, "targetURL");
        if (auto uuid = entry.find("uuidString"); uuid != entry.end() && uuid->is_string())
            setup.id = Uuid::fromString(uuid->get<std::string>());
        if (auto name = entry.find("displayName"); name != entry.end() && name->is_string())
            setup.displayName = name->get<std::string>();
        auto every = entry.find("updatesEvery");
        std::int64_t raw = every != entry.end() && every->is_number_integer() ? every->get<std::int64_t>() : -1;
        setup.updatesEvery = cachingUpdatesTagFromRaw(raw).value_or(CachingUpdatesTag::week);
        saved.remoteDBBookmark = bookmarkOf(entry, "remoteDBBookmark");
        if (std::optional<Bookmark> target = bookmarkOf(entry, "targetBookmark")) {
            target->isFolder = true;
            saved.targetBookmark = std::move(target);
        }
        if (auto mode = entry.find("indexMode"); mode != entry.end() && mode->is_number_integer())
            saved.indexMode = contentIndexModeFromRaw(mode->get<std::int64_t>());
        entries.push_back(std::move(saved));
    }
    return entries;
}

// A file that holds no finished build (new, or set aside and begun again)
// takes the mode the list kept for it.
void ContentIndexManager::restoreIndexMode(ContentIndex& index, std::optional<ContentIndexMode> saved) {
    DocumentInfo& info = index.mutableDocumentInfo();
    if (saved && !info.numberOfFSItems) info.lastIndexMode = *saved;
}

// A disk mounted at another place than when it was cached is found by its
// key, and its cache follows it there. A target seen on its disk for the
// first time gets its reference. True when either changed what is saved.
bool ContentIndexManager::relocateIfMoved(ContentIndex& index, std::optional<Bookmark> bookmark) {
    if (!index.targetURL()) return false;
    if (!bookmark) {
        if (!ContentIndexBuild::isTargetMounted(index)) return false;
        Result<Bookmark> made = Bookmark::makeForFolder(*index.targetURL());
        if (made) index.setTargetBookmark(std::move(*made));
        return made.ok();
    }
    index.setTargetBookmark(bookmark);
    Result<Bookmark::Resolved> resolved = bookmark->resolve();
    if (!resolved || !resolved->isStale || resolved->path == *index.targetURL()) return false;
    LOG(index.displayName() + ": its disk is mounted at another place; the target is now " + resolved->path);
    index.relocateTarget(resolved->path);
    if (Result<Bookmark> renewed = Bookmark::makeForFolder(resolved->path)) index.setTargetBookmark(*renewed);
    return true;
}

void ContentIndexManager::load() {
    caches.clear();
    std::optional<std::string> text = preferences.stringValue(savedIndexInfoKey);
    if (!text) return;
    std::optional<std::vector<SavedIndexInfo>> entries = decodeSavedIndexInfo(*text);
    if (!entries) {
        LOG("SavedIndexInfo is not a JSON array; no caches");
        return;
    }
    bool needsSaving = false;
    for (SavedIndexInfo& entry : *entries) {
        if (!entry.setup.id) needsSaving = true;
        Result<std::unique_ptr<ContentIndex>> made =
            openListed(std::move(entry.setup), std::move(entry.remoteDBBookmark), needsSaving);
        if (!made) {
            LOG("cache left out: " + made.error().description());
            continue;
        }
        restoreIndexMode(**made, entry.indexMode);
        if (relocateIfMoved(**made, std::move(entry.targetBookmark))) needsSaving = true;
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

// The original stays the adopted cache's shared copy, from which its owner's
// updates come; the copy takes its date, so that only a newer one is taken.
void ContentIndexManager::followOriginal(ContentIndex& index, const std::string& original) {
    FileSystem& fileSystem = FileSystem::real();
    Result<FileStatus> status = fileSystem.status(original);
    Result<Bookmark> bookmark = Bookmark::make(original);
    if (!status || !bookmark || !fileSystem.setModificationTime(index.localDBFile(), status->modifyTime)) {
        LOG("the adopted cache " + index.displayName() + " will not follow " + original);
        return;
    }
    index.setRemoteDBBookmark(std::move(*bookmark));
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
    followOriginal(**index, dbFile);
    caches.push_back(std::move(*index));
    if (Status saved = save(); !saved) return saved.error();
    return caches.back().get();
}

Status ContentIndexManager::remove(ContentIndex& index) {
    (void)FileSystem::real().removeFile(index.localDBFile());
    (void)FileSystem::real().removeFile(CacheFileCheck::stampPath(index.localDBFile()));
    std::erase(timedRefreshIndexes, &index);
    if (timedRefreshCurrentIndex == &index) timedRefreshCurrentIndex = nullptr;
    std::erase_if(caches, [&](const auto& listed) { return listed.get() == &index; });
    return save();
}

Status ContentIndexManager::setSharedCopy(ContentIndex& index, const std::optional<std::string>& file) {
    std::optional<Bookmark> bookmark;
    if (file) {
        Result<FileStatus> status = FileSystem::real().status(*file);
        std::string path =
            status && status->isDirectory() ? joinPath(*file, lastComponent(index.localDBFile())) : *file;
        if (path == index.localDBFile())
            return makeError(ErrorCode::invalidArgument, "the shared copy can't be the cache's own file");
        Result<FileStatus> folder = FileSystem::real().status(parentPath(path));
        if (!folder || !folder->isDirectory())
            return makeError(ErrorCode::notFound, "no folder " + parentPath(path) + " for the shared copy");
        Result<Bookmark> made = Bookmark::make(path);
        if (!made) return made.error();
        bookmark = std::move(*made);
    }
    index.setRemoteDBBookmark(std::move(bookmark));
    return save();
}

std::vector<ContentIndex*> ContentIndexManager::cachesForItem(const std::string& path) const {
    std::vector<ContentIndex*> found;
    std::string itemDisk;
    for (const auto& index : caches) {
        if (!index->targetURL() || !isSameOrBelow(path, *index->targetURL())) continue;
        if (itemDisk.empty()) itemDisk = FSUtilities::shared().keyForDisk(Url(path));
        std::string targetDisk =
            index->documentInfo().diskKey.value_or(FSUtilities::shared().keyForDisk(Url(*index->targetURL(), true)));
        if (!itemDisk.empty() && itemDisk == targetDisk) found.push_back(index.get());
    }
    return found;
}

ContentIndex* ContentIndexManager::cacheWithID(const Uuid& id) const {
    for (const auto& index : caches)
        if (index->id() == id) return index.get();
    return nullptr;
}

bool ContentIndexManager::isIndexing() const {
    return std::any_of(caches.begin(), caches.end(),
                       [](const auto& index) { return index->state() != ContentIndex::ContentIndexLMDBState::none; });
}

bool ContentIndexManager::isIndexing(const std::string& diskURL) const {
    return std::any_of(caches.begin(), caches.end(), [&](const auto& index) {
        return index->state() != ContentIndex::ContentIndexLMDBState::none && index->targetURL() &&
               FSUtilities::shared().diskPathFromFullPath(*index->targetURL()) == diskURL;
    });
}

void ContentIndexManager::cancelAll() {
    timedRefreshIndexes.clear();
    timedRefreshCurrentIndex = nullptr;
    for (const auto& index : caches)
        if (index->state() != ContentIndex::ContentIndexLMDBState::none) index->shouldCancel = true;
}

bool ContentIndexManager::startScheduldedRefreshIfNeeded(double now) {
    if (!preferences.boolValue("fileContentCachingTimeUpdatesEnabled") || timedRefreshCurrentIndex ||
        !timedRefreshIndexes.empty())
        return false;
    std::optional<double> lastTime;
    if (preferences.hasStoredValue(updateLastTimeKey)) lastTime = preferences.doubleValue(updateLastTimeKey);
    if (lastTime && now - *lastTime <= 60) return false;
    std::optional<int> minute = minuteOfDay(preferences.stringValue(updateTimeKey).value_or(""));
    if (!minute) return false;
    double chosen = todayAt(now, *minute);
    if (now < chosen || (lastTime && *lastTime >= chosen)) return false;
    (void)preferences.setValue(updateLastTimeKey, now);
    for (const auto& index : caches) timedRefreshIndexes.push_back(index.get());
    return !timedRefreshIndexes.empty();
}

ContentIndex* ContentIndexManager::performNextTimedIndexRefresh() {
    if (timedRefreshCurrentIndex) {
        if (timedRefreshCurrentIndex->state() != ContentIndex::ContentIndexLMDBState::none) return nullptr;
        if (timedRefreshCurrentIndex->shouldCancel) timedRefreshIndexes.clear();
        timedRefreshCurrentIndex = nullptr;
    }
    if (timedRefreshIndexes.empty()) return nullptr;
    timedRefreshCurrentIndex = timedRefreshIndexes.front();
    timedRefreshIndexes.erase(timedRefreshIndexes.begin());
    return timedRefreshCurrentIndex;
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
