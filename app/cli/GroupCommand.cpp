#include "GroupCommand.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/FSUtilities.h"
#include "platform/FileSystem.h"
#include "stores/GroupStore.h"

#include "Complain.h"
#include "ExitStatus.h"
#include "TypedPath.h"

namespace quester::cli {
namespace {

struct GroupOptions {
    std::string name;
    std::vector<std::string> paths;
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

int addToGroup(const GroupOptions& options) {
    auto urls = memberURLs(options.paths);
    if (!urls) {
        complain(urls.error().message);
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
    auto changed = store.change(group->id, [&](GroupModel& stored) { stored.add(*urls, FSUtilities::shared()); });
    if (!changed) {
        complain("cannot change the group: " + changed.error().message);
        return ExitStatus::failed;
    }
    return ExitStatus::found;
}

int listGroups() {
    const auto groups = GroupStore().sorted();
    for (const auto& group : groups) {
        std::printf("%s\n", group.name.c_str());
        for (const auto& member : group.urls) {
            const bool reachable = FileSystem::real().status(member.url.path()).ok();
            std::printf("  %s%s\n", member.url.path().c_str(), reachable ? "" : "  (not reachable now)");
        }
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
    if (options.paths.empty()) {
        if (Status removed = store.removeGroup(group->id); !removed) {
            complain("cannot remove the group: " + removed.error().message);
            return ExitStatus::failed;
        }
        return ExitStatus::found;
    }
    std::set<Uuid> ids;
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
    add->add_option("paths", options->paths, "The files and folders")->required();
    add->callback([options, &exitStatus] { exitStatus = addToGroup(*options); });
    group->add_subcommand("list", "The groups and their members")->callback([&exitStatus] {
        exitStatus = listGroups();
    });
    CLI::App* remove = group->add_subcommand("remove", "Remove a group, or some of its members");
    remove->add_option("name", options->name, "The group's name")->required();
    remove->add_option("paths", options->paths, "The members to remove (default: the whole group)");
    remove->callback([options, &exitStatus] { exitStatus = removeFromGroup(*options); });
}

}  // namespace quester::cli
