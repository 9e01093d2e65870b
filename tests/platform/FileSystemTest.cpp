#include "platform/FileSystem.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <climits>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "platform/AtomicFile.h"
#include "platform/ExecutableFile.h"
#include "platform/FaultInjectingFileSystem.h"
#include "platform/MountEntry.h"
#include "testing/DeepFolders.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

namespace fs = std::filesystem;

std::set<std::string> namesIn(FileSystem& fileSystem, DirectoryHandle& directory) {
    std::set<std::string> names;
    std::vector<std::byte> buffer(65536);
    std::vector<DirectoryEntry> batch;
    while (fileSystem.readEntries(directory, buffer, batch) && !batch.empty()) {
        for (const auto& entry : batch) names.insert(entry.name);
    }
    return names;
}

std::set<std::string> filesIn(const fs::path& folder) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) names.insert(entry.path().filename().string());
    return names;
}

TEST(LinuxFileSystem, AFolderDeeperThanOnePathReachesIsOpenedAndStatted) {
    testing::TempDir dir;
    const std::string name(200, 'n');
    const std::string deepest = testing::makeDeepFolders(dir.str(), PATH_MAX / 200 + 2, name, "bottom.txt");
    ASSERT_GT(deepest.size(), static_cast<std::size_t>(PATH_MAX));
    auto opened = FileSystem::real().openDirectory(deepest);
    ASSERT_TRUE(opened) << opened.error().message;
    EXPECT_EQ(namesIn(FileSystem::real(), **opened), std::set<std::string>{"bottom.txt"});
    auto status = FileSystem::real().status(deepest + "/bottom.txt");
    ASSERT_TRUE(status) << status.error().message;
    EXPECT_TRUE(status->isRegular());
    testing::removeDeepFolders(dir.str(), name, "bottom.txt");
}

TEST(LinuxFileSystem, OpeningByNameNeverFollowsALinkAndFailuresTellNotFoundApart) {
    testing::TempDir dir;
    dir.write("real/inside.txt", "x");
    fs::create_directory_symlink(dir.path() / "real", dir.path() / "link");
    FileSystem& real = FileSystem::real();
    auto top = real.openDirectory(dir.str());
    ASSERT_TRUE(top);
    EXPECT_EQ(namesIn(real, **top), (std::set<std::string>{"real", "link"}));
    EXPECT_FALSE(real.openDirectoryAt(**top, "link"));
    auto folder = real.openDirectoryAt(**top, "real");
    ASSERT_TRUE(folder);
    EXPECT_EQ(namesIn(real, **folder), std::set<std::string>{"inside.txt"});
    EXPECT_EQ((*folder)->path(), dir.str() + "/real");

    EXPECT_TRUE(real.openDirectory(dir.str() + "/missing").isNotFound());
    EXPECT_EQ(real.openDirectory(dir.str() + "/real/inside.txt").error().code, ErrorCode::invalidArgument);
    EXPECT_EQ(real.statusAt(**top, "link")->kind, FileKind::symbolicLink);
    EXPECT_TRUE(real.status(dir.str() + "/link")->isDirectory());
}

// Reads are sized by the stated size: the whole file must still come, of
// any size, and of /proc, whose files state none.
TEST(LinuxFileSystem, ReadsTheStartOrTheWholeOfAFile) {
    testing::TempDir dir;
    FileSystem& real = FileSystem::real();
    const auto file = dir.write("data.txt", "0123456789");
    EXPECT_EQ(real.readFile(file.string(), 4).valueOr(""), "0123");
    EXPECT_EQ(real.readFile(file.string(), 10).valueOr(""), "0123456789");
    EXPECT_EQ(real.readFile(file.string()).valueOr(""), "0123456789");
    EXPECT_EQ(real.readFile(dir.write("empty", "").string()).valueOr("x"), "");
    std::string big;
    for (int i = 0; big.size() < 300'000; ++i) big += std::to_string(i) + ' ';
    EXPECT_EQ(real.readFile(dir.write("big", big).string()).valueOr(""), big);
    EXPECT_EQ(real.readFile(dir.str() + "/big", 70'000).valueOr(""), big.substr(0, 70'000));
    const std::string mounts = real.readFile("/proc/self/mountinfo").valueOr("");
    EXPECT_GT(mounts.size(), 0u);
    EXPECT_EQ(mounts.back(), '\n');
    EXPECT_TRUE(real.readFile(dir.str() + "/none").isNotFound());

    std::string buffer;
    EXPECT_EQ(real.readFileInto(dir.str() + "/big", buffer).valueOr(""), big);
    const char* const kept = buffer.data();
    EXPECT_EQ(real.readFileInto(file.string(), buffer).valueOr(""), "0123456789") << "a shorter file after a longer";
    EXPECT_EQ(buffer.data(), kept) << "the buffer is used again, not made anew";
    EXPECT_EQ(real.readFileInto(dir.str() + "/empty", buffer).valueOr("x"), "");
}

TEST(AtomicFile, AFailingWriteOrAVanishedDiskLeavesTheOldFileAndNoTemporaryFile) {
    testing::TempDir dir;
    const auto target = dir.write("store.json", "old contents");
    FaultInjectingFileSystem faulty;
    faulty.failWritesAfter(5);
    const Status written = replaceFileAtomically(target.string(), std::string(1000, 'n'), faulty);
    ASSERT_FALSE(written);
    EXPECT_EQ(written.error().code, ErrorCode::ioError);
    EXPECT_EQ(testing::readFile(target), "old contents");

    FaultInjectingFileSystem unplugged;
    unplugged.removeDisk(dir.str());
    EXPECT_FALSE(replaceFileAtomically(dir.str() + "/new.json", "{}", unplugged));
    EXPECT_EQ(filesIn(dir.path()), std::set<std::string>{"store.json"});
}

TEST(ExecutableFile, ThePermissionAndTheSignatureDecideNotTheName) {
    testing::TempDir dir;
    auto make = [&](const char* name, const std::string& contents, bool executable) {
        const auto path = dir.write(name, contents);
        ::chmod(path.c_str(), executable ? 0755 : 0644);
        return path.string();
    };
    const std::string elf = make("program", testing::readFile("/bin/true"), true);
    const std::string script = make("run-me", "#!/bin/sh\necho hi\n", true);
    const std::string zeros = make("data.bin", std::string(64, '\0'), true);
    const std::string plainScript = make("tool.sh", "#!/bin/sh\n", false);
    EXPECT_TRUE(isExecutableFile(elf));
    EXPECT_TRUE(isExecutableFile(script));
    EXPECT_FALSE(isExecutableFile(zeros));
    EXPECT_FALSE(isExecutableFile(plainScript));
    EXPECT_FALSE(isExecutableFile(dir.str()));

    FaultInjectingFileSystem faulty;
    faulty.makeUnreadable(elf);
    EXPECT_FALSE(isExecutableFile(elf, faulty));
}

TEST(MountEntry, OnlyMountsThatMayHoldPersonalFilesAreWalkedAsDisks) {
    auto mount = [](const char* point, const char* type) { return MountEntry{1, 0, point, "src", type, "rw"}; };
    EXPECT_TRUE(mount("/home", "ext4").holdsPersonalFiles());
    EXPECT_TRUE(mount("/mnt/share", "nfs4").holdsPersonalFiles());
    EXPECT_FALSE(mount("/run/user/1000", "tmpfs").holdsPersonalFiles());
    EXPECT_FALSE(mount("/proc", "proc").holdsPersonalFiles());
    EXPECT_FALSE(mount("/snap/core/123", "squashfs").holdsPersonalFiles());
    EXPECT_FALSE(mount("/var/lib/docker/overlay2/x/merged", "overlay").holdsPersonalFiles());
}

}  // namespace
}  // namespace quester
