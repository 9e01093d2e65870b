#include "query/SearchLocation.h"

#include <gtest/gtest.h>

#include "platform/DiskInfoManager.h"
#include "support/MainLoop.h"
#include "support/NotificationCenter.h"
#include "testing/ScopedPlatformProfile.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

class FakeCache final : public CacheVC_IndexInterface {
public:
    FakeCache(std::string name, std::optional<Url> root) : cacheName(std::move(name)), root(std::move(root)) {}
    Uuid uuid() const override { return id; }
    std::string name() const override { return cacheName; }
    std::optional<Url> rootURL() const override { return root; }

private:
    Uuid id = Uuid::random();
    std::string cacheName;
    std::optional<Url> root;
};

std::vector<std::string> paths(const std::vector<Url>& urls) {
    std::vector<std::string> result;
    for (const auto& url : urls) result.push_back(url.path());
    return result;
}

TEST(SearchLocation, WithoutTargetsOrPresetNothingIsInside) {
    SearchLocation location;
    EXPECT_FALSE(location.pathIsInLocation("/"));
    EXPECT_FALSE(location.pathIsInLocation("/home/a/b.txt"));
}

TEST(SearchLocation, FolderTargetsCoverByPlainTextPrefix) {
    auto location = SearchLocation::fromURLs({Url("/srv/a/Doc", true), Url("/opt/x", true)});
    EXPECT_EQ(location.locationName, "Doc");
    EXPECT_TRUE(location.pathIsInLocation("/srv/a/Doc/report.txt"));
    EXPECT_TRUE(location.pathIsInLocation("/srv/a/Documents/report.txt"));
    EXPECT_TRUE(location.pathIsInLocation("/opt/x/y"));
    EXPECT_FALSE(location.pathIsInLocation("/srv/a/Do"));
    EXPECT_EQ(paths(location.locationURLs()), (std::vector<std::string>{"/srv/a/Doc", "/opt/x"}));
}

TEST(SearchLocation, NonExplicitCachesCountOnlyWhenNoExplicitTargetExists) {
    auto cache = std::make_shared<FakeCache>("Archive", Url("/data", true));
    SearchLocation mixed({SearchTarget::offline(cache, false), SearchTarget::url(Url("/srv/a", true))});
    EXPECT_EQ(mixed.locationName, "Archive");
    EXPECT_FALSE(mixed.pathIsInLocation("/data/x"));
    EXPECT_TRUE(mixed.pathIsInLocation("/srv/a/x"));

    SearchLocation cachesOnly({SearchTarget::offline(cache, false)});
    EXPECT_TRUE(cachesOnly.pathIsInLocation("/data/x"));
    EXPECT_FALSE(cachesOnly.pathIsInLocation("/srv/a/x"));

    SearchLocation explicitCache({SearchTarget::offline(cache, true), SearchTarget::url(Url("/srv/a", true))});
    EXPECT_TRUE(explicitCache.pathIsInLocation("/data/x"));
}

TEST(SearchLocation, ACacheWithoutARootCoversEverything) {
    SearchLocation location({SearchTarget::offline(std::make_shared<FakeCache>("Loose", std::nullopt), true)});
    EXPECT_TRUE(location.pathIsInLocation("/anything/at/all"));
}

TEST(SearchTarget, EqualByURLOrByCacheIdentityNotByExplicitness) {
    auto cache = std::make_shared<FakeCache>("A", std::nullopt);
    EXPECT_EQ(SearchTarget::url(Url("/a")), SearchTarget::url(Url("/a", true)));
    EXPECT_NE(SearchTarget::url(Url("/a")), SearchTarget::url(Url("/b")));
    EXPECT_EQ(SearchTarget::offline(cache, true), SearchTarget::offline(cache, false));
    EXPECT_NE(SearchTarget::offline(cache, true),
              SearchTarget::offline(std::make_shared<FakeCache>("A", std::nullopt), true));
    EXPECT_NE(SearchTarget::offline(cache, true), SearchTarget::url(Url("/a")));
}

TEST(SearchLocation, TheRootIsReplacedByTheBootVolumeInTheDiskList) {
    auto location = SearchLocation::fromURLs({Url("/srv", true), Url("/", true)});
    EXPECT_EQ(paths(location.disksForLocations()), (std::vector<std::string>{"/", "/srv"}));

    testing::ScopedPlatformProfile mac(PlatformProfile::macOS());
    EXPECT_EQ(paths(location.disksForLocations()), (std::vector<std::string>{"/Volumes/Macintosh HD", "/", "/srv"}));
}

TEST(SearchLocation, AResultUnderTheBootVolumesSecondSpellingIsInsideTheFolder) {
    testing::ScopedPlatformProfile mac(PlatformProfile::macOS());
    auto location = SearchLocation::fromURLs({Url("/Users", true)});
    EXPECT_TRUE(location.pathIsInLocation("/Volumes/Macintosh HD/Users/ann/a.txt"));
    EXPECT_TRUE(location.pathIsInLocation("/Users/ann/a.txt"));
    EXPECT_FALSE(location.pathIsInLocation("/Volumes/Other/Users/ann/a.txt"));
}

TEST(SearchLocation, CachesOfTheLocationFollowTheOfflineOnes) {
    auto offline = std::make_shared<FakeCache>("Offline", Url("/mnt/gone", true));
    auto inside = std::make_shared<FakeCache>("Inside", Url("/srv/data/photos", true));
    auto outside = std::make_shared<FakeCache>("Outside", Url("/opt/other", true));
    auto rootless = std::make_shared<FakeCache>("Rootless", std::nullopt);
    SearchLocation location({SearchTarget::offline(offline, true), SearchTarget::url(Url("/srv/data", true))});
    auto caches = location.cachesForLocations({outside, inside, rootless});
    ASSERT_EQ(caches.size(), 2u);
    EXPECT_EQ(caches[0], offline);
    EXPECT_EQ(caches[1], inside);
    // A cache whose folder holds a searched folder answers for it.
    auto holding = std::make_shared<FakeCache>("Holding", Url("/srv", true));
    EXPECT_EQ(location.cachesForLocations({holding}).size(), 2u);
    // The hidden rules judge below a named cache's folder as below a typed one.
    EXPECT_EQ(location.locationPaths(), (std::vector<std::string>{"/srv/data", "/mnt/gone"}));
}

TEST(SearchLocationPresets, NamesRoundTrip) {
    for (auto set : {SearchLocationURLSet::allDisks, SearchLocationURLSet::macDisks, SearchLocationURLSet::localDisks,
                     SearchLocationURLSet::networkDisks, SearchLocationURLSet::backups, SearchLocationURLSet::home,
                     SearchLocationURLSet::external}) {
        EXPECT_EQ(searchLocationURLSetFromName(locationName(set)), set);
    }
    EXPECT_FALSE(searchLocationURLSetFromName("everywhere").has_value());
}

// Disks mounted under a temp volumes folder, known to a manager of the test's own.
class SearchLocationDisksTest : public ::testing::Test {
protected:
    SearchLocationDisksTest() {
        PlatformProfile profile = PlatformProfile::linux();
        profile.volumesFolder = media.str();
        fs = std::make_unique<FSUtilities>(profile);
        manager = std::make_unique<DiskInfoManager>(*fs, center);
    }
    std::string mount(int id, const std::string& name, const std::string& fsType) {
        auto folder = media.mkdir(name).string();
        EXPECT_TRUE(manager->add(MountEntry{id, 1, folder, "/dev/quester-test-none", fsType, "rw"}));
        return folder;
    }

    testing::TempDir media;
    MainLoop loop;
    NotificationCenter center{loop};
    std::unique_ptr<FSUtilities> fs;
    std::unique_ptr<DiskInfoManager> manager;
};

TEST_F(SearchLocationDisksTest, AllDisksIsLocalThenNetworkThenBackups) {
    std::string usb = mount(11, "usb", "vfat");
    std::string mac = mount(12, "mac", "apfs");
    media.mkdir("timemachine/Backups.backupdb");
    std::string backup = mount(13, "timemachine", "apfs");

    EXPECT_EQ(paths(SearchLocation::urlsFor(SearchLocationURLSet::localDisks, *manager)),
              (std::vector<std::string>{mac, usb}));
    EXPECT_EQ(paths(SearchLocation::urlsFor(SearchLocationURLSet::macDisks, *manager)),
              (std::vector<std::string>{mac}));
    EXPECT_EQ(paths(SearchLocation::urlsFor(SearchLocationURLSet::backups, *manager)),
              (std::vector<std::string>{backup}));
    EXPECT_TRUE(SearchLocation::urlsFor(SearchLocationURLSet::networkDisks, *manager).empty());
    EXPECT_EQ(paths(SearchLocation::urlsFor(SearchLocationURLSet::allDisks, *manager)),
              (std::vector<std::string>{mac, usb, backup}));

    std::string share = mount(14, "share", "nfs4");
    EXPECT_EQ(paths(SearchLocation::urlsFor(SearchLocationURLSet::allDisks, *manager)),
              (std::vector<std::string>{mac, usb, share, backup}));

    auto all = SearchLocation::preset(SearchLocationURLSet::allDisks, std::nullopt, manager.get());
    EXPECT_TRUE(all.pathIsInLocation(share + "/movies/a.mkv"));
}

TEST_F(SearchLocationDisksTest, HomeCoversTheUsersHomeOnly) {
    auto home = SearchLocation::preset(SearchLocationURLSet::home, "Mine", manager.get());
    EXPECT_EQ(home.locationName, "Mine");
    EXPECT_EQ(paths(home.locationURLs()), (std::vector<std::string>{userHomeFolder()}));
    EXPECT_TRUE(home.pathIsInLocation(userHomeFolder() + "/notes.txt"));
    EXPECT_FALSE(home.pathIsInLocation("/nowhere-near-home/notes.txt"));
}

}  // namespace
}  // namespace quester
