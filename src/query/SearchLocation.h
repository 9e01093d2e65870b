#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "query/SearchTarget.h"

namespace quester {

class DiskInfoManager;

// The named presets of a location.
enum class SearchLocationURLSet { allDisks, macDisks, localDisks, networkDisks, backups, home, external };

// "all", "macdisks", "local", "network", "backups", "home", "external".
std::string locationName(SearchLocationURLSet set);
std::optional<SearchLocationURLSet> searchLocationURLSetFromName(std::string_view name);

// Where a query looks: a preset or a list of targets. A plain value; the
// preset's folders are read from the disk list when it is made.
struct SearchLocation {
    std::optional<SearchLocationURLSet> locationSet;
    std::vector<SearchTarget> allTargets;
    std::string locationName;

    SearchLocation() = default;
    // Named after `name`, else after the first target (its display name or the
    // cache's name); empty without targets.
    SearchLocation(std::vector<SearchTarget> targets, std::optional<std::string> name = std::nullopt);
    static SearchLocation fromURLs(const std::vector<Url>& urls, std::optional<std::string> name = std::nullopt);
    // The preset's folders, from `disks` (the process's disk list by default).
    static SearchLocation preset(SearchLocationURLSet set, std::optional<std::string> name = std::nullopt,
                                 const DiskInfoManager* disks = nullptr);
    // The folders a preset stands for now.
    static std::vector<Url> urlsFor(SearchLocationURLSet set, const DiskInfoManager& disks);

    // The URLs of the folder targets, in order.
    std::vector<Url> locationURLs() const;
    // The paths of `locationURLs`, then the folders of the off-line targets'
    // caches: the folders a person asked to search.
    std::vector<std::string> locationPaths() const;
    // `locationURLs` with "/" replaced, at the front, by the boot volume's URLs.
    std::vector<Url> disksForLocations() const;
    // The caches of the off-line targets, then each of `knownCaches` whose root
    // lies in one of the location's disks or holds one of its folders.
    std::vector<std::shared_ptr<const CacheVC_IndexInterface>> cachesForLocations(
        const std::vector<std::shared_ptr<const CacheVC_IndexInterface>>& knownCaches) const;
    // Whether a path lies in the location, by plain text prefix of the corrected
    // paths: "/home/a/Doc" covers "/home/a/Documents".
    bool pathIsInLocation(const std::string& path) const;

    bool operator==(const SearchLocation& other) const = default;
};

// The home folder of the current user, from the password database.
std::string userHomeFolder();

}  // namespace quester
