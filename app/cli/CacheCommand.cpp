#include "CacheCommand.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "CacheManagerLoading.h"
#include "CacheUpdateRun.h"
#include "ExitStatus.h"
#include "cache/CacheMirror.h"
#include "cache/ContentIndexBuild.h"
#include "cache/ContentIndexManager.h"
#include "cache/DataConvertible.h"
#include "platform/FSUtilities.h"
#include "platform/FileLock.h"
#include "platform/FileSystem.h"
#include "platform/Url.h"
#include "results/DisplayText.h"
#include "stores/Preferences.h"

namespace quester::cli {

namespace {

struct CacheOptions {
    std::string path;
    std::string name;
    std::string content = "off";
    std::string every = "default";
    std::string format = "table";
    std::string sharedCopy;
    std::vector<std::string> names;
    bool all = false;
    bool due = false;
    bool rebuild = false;
    bool stopSharing = false;
};

int complain(const std::string& message) {
    std::fprintf(stderr, "quester: %s\n", terminalSafeText(message).c_str());
    return ExitStatus::failed;
}

std::unique_ptr<ContentIndexManager> loadManager() {
    Result<std::unique_ptr<ContentIndexManager>> manager = loadCacheManager();
    if (!manager) {
        complain(manager.error().message);
        return nullptr;
    }
    return std::move(*manager);
}

std::optional<ContentIndexMode> modeNamed(const std::string& name) {
    if (name == "off") return ContentIndexMode::off;
    if (name == "text") return ContentIndexMode::textDocuments;
    if (name == "ocr") return ContentIndexMode::ocrAndTextDocuments;
    return std::nullopt;
}

const char* modeName(ContentIndexMode mode) {
    switch (mode) {
        case ContentIndexMode::textDocuments:
            return "text";
        case ContentIndexMode::ocrAndTextDocuments:
            return "ocr";
        case ContentIndexMode::off:
            break;
    }
    return "off";
}

std::string lastUpdatedText(double secondsSince2001) {
    if (secondsSince2001 <= DocumentInfo::distantPast) return "never";
    std::time_t time = static_cast<std::time_t>(ReferenceDate{secondsSince2001}.unixSeconds());
    std::tm local{};
    localtime_r(&time, &local);
    char text[32];
    std::strftime(text, sizeof(text), "%Y-%m-%d %H:%M", &local);
    return text;
}

// A cache set aside as damaged (a ".corrupt" file beside it) and not built
// again since needs a rebuild.
std::string stateOf(const ContentIndex& index, bool online) {
    const bool built = index.documentInfo().numberOfFSItems.has_value();
    if (!built && FileSystem::real().status(index.localDBFile() + ".corrupt")) return "needs rebuild";
    if (!index.targetURL()) return "adopted";
    if (!online) return "off line";
    if (index.documentInfo().isDirty) return "rebuild pending";
    if (!built) return "not built";
    return "ready";
}

nlohmann::json describe(const ContentIndex& index) {
    bool online = ContentIndexBuild::isTargetMounted(index);
    const DocumentInfo& info = index.documentInfo();
    nlohmann::json row = {
        {"name", index.displayName()},
        {"target",
         index.targetURL() ? nlohmann::json(*index.targetURL()) : nlohmann::json(info.suggestedTarget.value_or(""))},
        {"diskKey", info.diskKey.value_or("")},
        {"online", online},
        {"items", info.numberOfFSItems.value_or(0)},
        {"fileSize", index.cacheSizeOnDisk()},
        {"lastUpdated", lastUpdatedText(info.lastUpdated)},
        {"state", stateOf(index, online)},
        {"content", modeName(info.lastIndexMode)},
        {"every", std::string(cachingUpdatesTagName(index.updatesEvery()))},
        {"file", index.localDBFile()},
        {"sharedCopy", index.remoteDBBookmark() ? index.remoteDBBookmark()->path : std::string()},
    };
    return row;
}

int listCaches(const CacheOptions& options) {
    auto manager = loadManager();
    if (!manager) return ExitStatus::failed;
    if (options.format == "json") {
        for (const auto& index : manager->indexes())
            std::printf("%s\n",
                        describe(*index).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
        return ExitStatus::found;
    }
    std::printf("%-20s %-30s %-8s %10s %10s %-16s %s\n", "NAME", "TARGET", "ONLINE", "ITEMS", "SIZE", "UPDATED",
                "STATE");
    for (const auto& index : manager->indexes()) {
        nlohmann::json row = describe(*index);
        std::printf("%-20s %-30s %-8s %10lld %10s %-16s %s\n", terminalSafeText(row["name"].get<std::string>()).c_str(),
                    terminalSafeText(row["target"].get<std::string>()).c_str(),
                    row["online"].get<bool>() ? "yes" : "no", static_cast<long long>(row["items"].get<std::int64_t>()),
                    fileSizeText(row["fileSize"].get<std::uint64_t>()).c_str(),
                    row["lastUpdated"].get<std::string>().c_str(), row["state"].get<std::string>().c_str());
    }
    return ExitStatus::found;
}

int showInfo(const CacheOptions& options) {
    auto manager = loadManager();
    if (!manager) return ExitStatus::failed;
    ContentIndex* index = manager->cacheNamed(options.name);
    if (!index) return complain("no cache named '" + options.name + "' (see 'quester cache list')");
    nlohmann::json row = describe(*index);
    for (const auto& [key, value] : row.items()) {
        std::string text = value.is_string() ? value.get<std::string>() : value.dump();
        std::printf("%-12s %s\n", (key + ":").c_str(), terminalSafeText(text).c_str());
    }
    return ExitStatus::found;
}

int removeCache(const CacheOptions& options) {
    auto manager = loadManager();
    if (!manager) return ExitStatus::failed;
    ContentIndex* index = manager->cacheNamed(options.name);
    if (!index) return complain("no cache named '" + options.name + "' (see 'quester cache list')");
    if (Status removed = manager->remove(*index); !removed) return complain(removed.error().message);
    return ExitStatus::found;
}

int addCache(const CacheOptions& options) {
    std::optional<ContentIndexMode> mode = modeNamed(options.content);
    if (!mode) return complain("--content takes off, text or ocr, not '" + options.content + "'");
    std::optional<CachingUpdatesTag> every = cachingUpdatesTagFromName(options.every);
    if (!every)
        return complain("--every takes default, restart, day, 2days, 3days, week, fortnight, month or never, not '" +
                        options.every + "'");
    Result<FileStatus> status = FileSystem::real().status(options.path);
    if (!status) return complain("cannot cache " + options.path + ": " + status.error().message);
    char* resolved = realpath(options.path.c_str(), nullptr);
    std::string target = resolved ? resolved : options.path;
    std::free(resolved);
    auto manager = loadManager();
    if (!manager) return ExitStatus::failed;
    CacheUpdateRun updates(*manager, true);
    if (!status->isDirectory()) {
        if (!target.ends_with(std::string(".") + ContentIndexManager::cacheExtension))
            return complain(options.path + " is neither a folder nor a cache file (." +
                            ContentIndexManager::cacheExtension + ")");
        if (!options.sharedCopy.empty())
            return complain("an adopted cache follows the file it came from; --shared-copy is for folders");
        Result<ContentIndex*> adopted = manager->addExistingIndex(target);
        if (!adopted) return complain("cannot adopt " + options.path + ": " + adopted.error().message);
        return ExitStatus::found;
    }
    std::string name = options.name.empty() ? ContentIndexManager::suggestNiceName(target) : options.name;
    Result<ContentIndex*> made = manager->newIndex(target, name, *mode, *every);
    if (!made) return complain("cannot add a cache of " + options.path + ": " + made.error().message);
    if (!options.sharedCopy.empty()) {
        if (Status shared = manager->setSharedCopy(**made, options.sharedCopy); !shared) {
            (void)manager->remove(**made);
            return complain("cannot keep a shared copy at " + options.sharedCopy + ": " + shared.error().message);
        }
    }
    if (!Preferences::shared().boolValue("diskCatalogCaching"))
        (void)Preferences::shared().setValue("diskCatalogCaching", true);
    return updates.run({*made}, false);
}

int updateCaches(const CacheOptions& options) {
    auto manager = loadManager();
    if (!manager) return ExitStatus::failed;
    if (options.all + options.due + !options.names.empty() > 1)
        return complain("name caches, or give --all or --due, not more than one of these");
    std::vector<ContentIndex*> chosen;
    for (const std::string& name : options.names) {
        ContentIndex* index = manager->cacheNamed(name);
        if (!index) return complain("no cache named '" + name + "' (see 'quester cache list')");
        chosen.push_back(index);
    }
    if (options.names.empty())
        for (const auto& index : manager->indexes())
            if (!options.due || manager->isDue(*index)) chosen.push_back(index.get());
    CacheUpdateRun updates(*manager, !options.due);
    if (options.due) return updates.runDue();
    return updates.run(chosen, options.rebuild);
}

const char* mirrorOutcome(CacheMirror::Action action) {
    switch (action) {
        case CacheMirror::Action::pulled:
            return "the shared copy was newer and replaced the cache";
        case CacheMirror::Action::pushed:
            return "the cache was copied to the shared copy";
        case CacheMirror::Action::unavailable:
            return "the shared copy is unavailable (its disk is not mounted); it is brought level when it is back";
        case CacheMirror::Action::busy:
            return "the shared copy is being written elsewhere; it is brought level at the next update";
        case CacheMirror::Action::none:
            break;
    }
    return "the cache and its shared copy are level";
}

int shareCache(const CacheOptions& options) {
    if (options.stopSharing == !options.sharedCopy.empty())
        return complain("give the shared copy's file (or a folder for it), or --stop, not both");
    auto manager = loadManager();
    if (!manager) return ExitStatus::failed;
    ContentIndex* index = manager->cacheNamed(options.name);
    if (!index) return complain("no cache named '" + options.name + "' (see 'quester cache list')");
    std::optional<std::string> file;
    if (!options.stopSharing) file = options.sharedCopy;
    if (Status set = manager->setSharedCopy(*index, file); !set) return complain(set.error().message);
    if (!file) return ExitStatus::found;
    auto writer = FileLock::tryAcquire(index->writerLockPath());
    if (!writer) return complain("another program is updating caches; the shared copy is made at the next update");
    Result<CacheMirror::Action> mirrored = CacheMirror::mirrorIfNeeded(*index, true);
    if (!mirrored) return complain("the shared copy was not brought level: " + mirrored.error().message);
    std::printf("%s: %s\n", terminalSafeText(index->displayName()).c_str(), mirrorOutcome(*mirrored));
    return ExitStatus::found;
}

}  // namespace

void addCacheCommand(CLI::App& app, int& exitStatus) {
    auto options = std::make_shared<CacheOptions>();
    CLI::App* cache = app.add_subcommand("cache", "Disk caches: folders and disks kept searchable, also unplugged");
    cache->require_subcommand(1);
    cache->footer(exitStatusHelp);

    CLI::App* add =
        cache->add_subcommand("add", "Cache a folder or a disk (and build the cache now), or adopt a .qscache file");
    add->add_option("path", options->path, "The folder or disk to cache, or a cache file made elsewhere")->required();
    add->add_option("--name", options->name, "The cache's name (default: the folder's name)");
    add->add_option("--content", options->content,
                    "Words inside documents: off (names only), text, or ocr (text and pictures)");
    add->add_option("--every", options->every,
                    "How often 'cache update --due' updates it: default, restart, day, 2days, 3days, week, "
                    "fortnight, month or never");
    add->add_option("--shared-copy", options->sharedCopy,
                    "Keep a copy of the cache at this file (or in this folder) for other users or machines; "
                    "the newer of the two wins");
    add->callback([options, &exitStatus] { exitStatus = addCache(*options); });

    CLI::App* list = cache->add_subcommand("list", "List the caches");
    list->add_option("--format", options->format, "table (default) or json (one record a line, doc/json-output.md)")
        ->check(CLI::IsMember({"table", "json"}));
    list->callback([options, &exitStatus] { exitStatus = listCaches(*options); });

    CLI::App* update = cache->add_subcommand("update", "Bring caches up to date (Ctrl-C stops cleanly)");
    update->add_option("names", options->names, "The caches to update (default: all)");
    update->add_flag("--all", options->all, "Update every cache");
    update->add_flag("--due", options->due, "Update the caches whose time has come (for a timer)");
    update->add_flag("--rebuild", options->rebuild, "Start the caches again from nothing");
    update->callback([options, &exitStatus] { exitStatus = updateCaches(*options); });

    CLI::App* info = cache->add_subcommand("info", "Show what is known of one cache");
    info->add_option("name", options->name, "The cache's name")->required();
    info->callback([options, &exitStatus] { exitStatus = showInfo(*options); });

    CLI::App* share =
        cache->add_subcommand("share", "Keep a shared copy of a cache at a file or folder, or stop (--stop)");
    share->add_option("name", options->name, "The cache's name")->required();
    share->add_option("file", options->sharedCopy, "The shared copy's file, or a folder for it");
    share->add_flag("--stop", options->stopSharing, "Stop keeping a shared copy (the copy's file stays)");
    share->callback([options, &exitStatus] { exitStatus = shareCache(*options); });

    CLI::App* remove = cache->add_subcommand("remove", "Forget a cache and delete its file");
    remove->add_option("name", options->name, "The cache's name")->required();
    remove->callback([options, &exitStatus] { exitStatus = removeCache(*options); });
}

}  // namespace quester::cli
