#include "GroupCommand.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "cache/ContentIndexManager.h"
#include "platform/FSUtilities.h"
#include "platform/FileSystem.h"
#include "results/DisplayText.h"
#include "stores/GroupStore.h"

#include "CacheManagerLoading.h"
#include "Complain.h"
#include "ExitStatus.h"
#include "TypedPath.h"

namespace quester::cli {
namespace {

struct GroupOptions {
    std::string name;
    std::vector<std::string> paths;
    std::vector<std::string> caches;
};

// The members as absolute paths, each checked to be there now.
Result<std::vector<Url>> memberURLs(const std::vector<std::string>& paths) {
    std::vector<Url> urls;
    for (const auto& path : paths) {
        const std::string absolute = absoluteTypedPath(path);
        const auto status = FileSystem::real().status(absolute);
        if (!status) return makeError(ErrorCode::notFound, "no such file or folder: '" + path + "'");
        urls.emplace_back(absolute, status->isDirectory());
    }
    return urls;
}

// The identities of the disk caches of those names.
Result<std::vector<Uuid>> cacheIDs(const std::vector<std::string>& names) {
    if (names.empty()) return std::vector<Uuid>{};
    auto manager = loadCacheManager();
    if (!manager) return manager.error();
    std::vector<Uuid> ids;
    for (const auto& name : names) {
        const ContentIndex* cache = (*manager)->cacheNamed(name);
        if (!cache) return makeError(ErrorCode::notFound, "no cache named '" + name + "' (see 'quester cache list')");
        ids.push_back(cache->id());
    }
    return ids;
}

int addToGroup(const GroupOptions& options) {
    if (options.paths.empty() && options.caches.empty()) {
        complain("name the files and folders, or the caches (--cache), to add to the group");
        return ExitStatus::failed;
    }
    auto urls = memberURLs(options.paths);
    auto caches = cacheIDs(options.caches);
    if (!urls || !caches) {
        complain(!urls ? urls.error().message : caches.error().message);
        return ExitStatus::failed;
    }
    GroupStore store;
    auto group = store.groupNamed(options.name);
    if (!group) {
        auto made = store.newGroup(options.name);
        if (!made) {
            complain("cannot make the group: " + made.error().message);
            return ExitStatus::failed;
        }
        group = *made;
    }
    auto changed = store.change(group->id, [&](GroupModel& stored) {
        stored.add(*urls, FSUtilities::shared());
        if (!caches->empty()) stored.addCaches(*caches);
    });
    if (!changed) {
        complain("cannot change the group: " + changed.error().message);
        return ExitStatus::failed;
    }
    return ExitStatus::found;
}

// A cache member by its name; one removed since shows its identity.
std::string cacheMemberName(const Uuid& id, const ContentIndexManager* manager) {
    const ContentIndex* cache = manager ? manager->cacheWithID(id) : nullptr;
    return cache ? cache->displayName() : id.toString() + "  (no such cache now)";
}

int listGroups() {
    const auto groups = GroupStore().sorted();
    auto manager = loadCacheManager();
    for (const auto& group : groups) {
        std::printf("%s\n", terminalSafeText(group.name).c_str());
        for (const auto& member : group.urls) {
            const bool reachable = FileSystem::real().status(member.url.path()).ok();
            std::printf("  %s%s\n", terminalSafeText(member.url.path()).c_str(),
                        reachable ? "" : "  (not reachable now)");
        }
        for (const auto& id : group.cacheIDs.value_or(std::vector<Uuid>{}))
            std::printf("  cache %s\n",
                        terminalSafeText(cacheMemberName(id, manager ? manager->get() : nullptr)).c_str());
    }
    return groups.empty() ? ExitStatus::nothingFound : ExitStatus::found;
}

// The whole group without paths; else the members of those paths.
int removeFromGroup(const GroupOptions& options) {
    GroupStore store;
    const auto group = store.groupNamed(options.name);
    if (!group) {
        complain("no group named '" + options.name + "' (see 'quester group list')");
        return ExitStatus::failed;
    }
    if (options.paths.empty() && options.caches.empty()) {
        if (Status removed = store.removeGroup(group->id); !removed) {
            complain("cannot remove the group: " + removed.error().message);
            return ExitStatus::failed;
        }
        return ExitStatus::found;
    }
    auto caches = cacheIDs(options.caches);
    if (!caches) {
        complain(caches.error().message);
        return ExitStatus::failed;
    }
    std::set<Uuid> ids(caches->begin(), caches->end());
    for (const auto& path : options.paths) {
        const std::string absolute = absoluteTypedPath(path);
        for (const auto& member : group->urls)
            if (member.url.path() == absolute) ids.insert(member.id);
    }
    if (ids.empty()) {
        complain("the group '" + options.name + "' has none of those members");
        return ExitStatus::failed;
    }
    auto changed = store.change(group->id, [&](GroupModel& stored) { stored.remove(ids); });
    if (!changed) {
        complain("cannot change the group: " + changed.error().message);
        return ExitStatus::failed;
    }
    return ExitStatus::found;
}

}  // namespace

void addGroupCommand(CLI::App& app, int& exitStatus) {
    auto options = std::make_shared<GroupOptions>();
    CLI::App* group = app.add_subcommand("group", "Named lists of files and folders to search together");
    group->require_subcommand(1);
    CLI::App* add = group->add_subcommand("add", "Add files and folders to a group, making it when new");
    add->add_option("name", options->name, "The group's name")->required();
    add->add_option("paths", options->paths, "The files and folders");
    add->add_option("--cache", options->caches, "A disk cache, by its name, searched also while its disk is unplugged");
    add->callback([options, &exitStatus] { exitStatus = addToGroup(*options); });
    group->add_subcommand("list", "The groups and their members")->callback([&exitStatus] {
        exitStatus = listGroups();
    });
    CLI::App* remove = group->add_subcommand("remove", "Remove a group, or some of its members");
    remove->add_option("name", options->name, "The group's name")->required();
    remove->add_option("paths", options->paths, "The members to remove (default: the whole group)");
    remove->add_option("--cache", options->caches, "A cache member to remove, by its name");
    remove->callback([options, &exitStatus] { exitStatus = removeFromGroup(*options); });
}

}  // namespace quester::cli
