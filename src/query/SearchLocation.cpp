#include "query/SearchLocation.h"

#include <algorithm>
#include <array>

#include "platform/DiskInfoManager.h"
#include "support/AppDirectories.h"
#include "support/PathText.h"

namespace quester {

namespace {

constexpr std::array<std::pair<SearchLocationURLSet, const char*>, 7> kNames{{
    {SearchLocationURLSet::allDisks, "all"},
    {SearchLocationURLSet::macDisks, "macdisks"},
    {SearchLocationURLSet::localDisks, "local"},
    {SearchLocationURLSet::networkDisks, "network"},
    {SearchLocationURLSet::backups, "backups"},
    {SearchLocationURLSet::home, "home"},
    {SearchLocationURLSet::external, "external"},
}};

template <typename Predicate>
std::vector<Url> volumeURLs(const std::vector<DiskInfo>& volumes, Predicate wanted) {
    std::vector<Url> urls;
    for (const auto& volume : volumes) {
        if (wanted(volume)) urls.push_back(volume.url);
    }
    return urls;
}

void append(std::vector<Url>& urls, const std::vector<Url>& more) {
    urls.insert(urls.end(), more.begin(), more.end());
}

std::vector<Url> localDisks(const std::vector<DiskInfo>& volumes) {
    auto urls = volumeURLs(volumes, [](const DiskInfo& d) { return d.isLocal && !d.isBackup && d.isMacFS; });
    append(urls, volumeURLs(volumes, [](const DiskInfo& d) { return d.isLocal && !d.isBackup && !d.isMacFS; }));
    return urls;
}

// Where the boot volume's items are spelled from: its second spelling, if any.
std::string bootVolumeMountPath() {
    auto boot = Url::bootVolumeURL();
    return boot ? boot->path() : std::string("/");
}

// A path with the boot volume's second spelling taken off its front.
std::string withoutBootVolumePrefix(const std::string& path) {
    auto boot = Url::bootVolumeURL();
    if (boot && (path == boot->path() || path.starts_with(boot->path() + "/"))) {
        std::string rest = path.substr(boot->path().size());
        return rest.empty() ? "/" : rest;
    }
    return path;
}

bool targetCovers(const SearchTarget& target, const std::string& path) {
    if (const auto* offline = target.offlineValue()) {
        auto root = offline->cache ? offline->cache->rootURL() : std::nullopt;
        return !root || path.starts_with(Url::correctRootBasedPath(root->path()));
    }
    const std::string& targetPath = target.urlValue()->path();
    if (targetPath == "/" && path.starts_with(bootVolumeMountPath())) return true;
    return Url::correctRootBasedPath(path).starts_with(Url::correctRootBasedPath(targetPath));
}

bool isExplicit(const SearchTarget& target) {
    const auto* offline = target.offlineValue();
    return !offline || offline->isExplicit;
}

}  // namespace

std::string locationName(SearchLocationURLSet set) {
    for (const auto& [value, name] : kNames) {
        if (value == set) return name;
    }
    return {};
}

std::optional<SearchLocationURLSet> searchLocationURLSetFromName(std::string_view name) {
    for (const auto& [value, text] : kNames) {
        if (name == text) return value;
    }
    return std::nullopt;
}

std::string userHomeFolder() {
    std::string home = AppDirectories::homeDirectory();
    return home.empty() ? "/" : home;
}

SearchLocation::SearchLocation(std::vector<SearchTarget> targets, std::optional<std::string> name)
    : allTargets(std::move(targets)) {
    if (name) {
        locationName = *name;
    } else if (!allTargets.empty()) {
        const SearchTarget& first = allTargets.front();
        if (const Url* url = first.urlValue()) {
            locationName = url->displayName();
        } else if (first.offlineValue()->cache) {
            locationName = first.offlineValue()->cache->name();
        }
    }
}

SearchLocation SearchLocation::fromURLs(const std::vector<Url>& urls, std::optional<std::string> name) {
    std::vector<SearchTarget> targets;
    for (const auto& url : urls) targets.push_back(SearchTarget::url(url));
    return SearchLocation(std::move(targets), std::move(name));
}

std::vector<Url> SearchLocation::urlsFor(SearchLocationURLSet set, const DiskInfoManager& disks) {
    auto volumes = disks.volumes();
    switch (set) {
        case SearchLocationURLSet::allDisks: {
            auto urls = localDisks(volumes);
            append(urls, urlsFor(SearchLocationURLSet::networkDisks, disks));
            append(urls, urlsFor(SearchLocationURLSet::backups, disks));
            return urls;
        }
        case SearchLocationURLSet::macDisks:
            return volumeURLs(volumes, [](const DiskInfo& d) { return d.isLocal && !d.isBackup && d.isMacFS; });
        case SearchLocationURLSet::localDisks:
            return localDisks(volumes);
        case SearchLocationURLSet::networkDisks:
            return volumeURLs(volumes, [](const DiskInfo& d) { return !d.isLocal; });
        case SearchLocationURLSet::backups:
            return volumeURLs(volumes, [](const DiskInfo& d) { return d.isBackup; });
        case SearchLocationURLSet::home:
            return {Url(userHomeFolder(), true)};
        case SearchLocationURLSet::external:
            return volumeURLs(disks.externalDisks(), [](const DiskInfo&) { return true; });
    }
    return {};
}

SearchLocation SearchLocation::preset(SearchLocationURLSet set, std::optional<std::string> name,
                                      const DiskInfoManager* disks) {
    const DiskInfoManager& source = disks ? *disks : DiskInfoManager::shared();
    SearchLocation location = fromURLs(urlsFor(set, source), name.value_or(quester::locationName(set)));
    location.locationSet = set;
    return location;
}

std::vector<Url> SearchLocation::locationURLs() const {
    std::vector<Url> urls;
    for (const auto& target : allTargets) {
        if (const Url* url = target.urlValue()) urls.push_back(*url);
    }
    return urls;
}

std::vector<std::string> SearchLocation::locationPaths() const {
    std::vector<std::string> paths;
    for (const auto& url : locationURLs()) paths.push_back(url.path());
    for (const auto& target : allTargets) {
        const auto* offline = target.offlineValue();
        auto root = offline && offline->cache ? offline->cache->rootURL() : std::nullopt;
        if (root) paths.push_back(root->path());
    }
    return paths;
}

std::vector<Url> SearchLocation::disksForLocations() const {
    auto urls = locationURLs();
    auto root = std::find_if(urls.begin(), urls.end(), [](const Url& url) { return url.path() == "/"; });
    if (root == urls.end()) return urls;
    urls.erase(root);
    std::vector<Url> front;
    if (auto boot = Url::bootVolumeURL()) front.push_back(*boot);
    front.push_back(Url("/", true));
    urls.insert(urls.begin(), front.begin(), front.end());
    return urls;
}

std::vector<std::shared_ptr<const CacheVC_IndexInterface>> SearchLocation::cachesForLocations(
    const std::vector<std::shared_ptr<const CacheVC_IndexInterface>>& knownCaches) const {
    std::vector<std::shared_ptr<const CacheVC_IndexInterface>> caches;
    for (const auto& target : allTargets) {
        if (const auto* offline = target.offlineValue(); offline && offline->cache) caches.push_back(offline->cache);
    }
    auto disks = Url::namedBootVolumeURLsToSlashRoot(disksForLocations());
    const std::vector<std::string> folders = locationPaths();
    for (const auto& cache : knownCaches) {
        auto root = cache ? cache->rootURL() : std::nullopt;
        if (!root) continue;
        bool onDisk = std::any_of(disks.begin(), disks.end(),
                                  [&](const Url& disk) { return root->path().starts_with(disk.path()); });
        // A folder searched inside a cached folder is answered by its cache too.
        bool holdsFolder = std::any_of(folders.begin(), folders.end(),
                                       [&](const std::string& folder) { return isSameOrBelow(folder, root->path()); });
        if (onDisk || holdsFolder) caches.push_back(cache);
    }
    return caches;
}

bool SearchLocation::pathIsInLocation(const std::string& path) const {
    if (locationSet == SearchLocationURLSet::home) return withoutBootVolumePrefix(path).starts_with(userHomeFolder());
    std::vector<const SearchTarget*> explicitTargets;
    for (const auto& target : allTargets) {
        if (isExplicit(target)) explicitTargets.push_back(&target);
    }
    if (explicitTargets.empty()) {
        for (const auto& target : allTargets) explicitTargets.push_back(&target);
    }
    return std::any_of(explicitTargets.begin(), explicitTargets.end(),
                       [&](const SearchTarget* target) { return targetCovers(*target, path); });
}

}  // namespace quester
