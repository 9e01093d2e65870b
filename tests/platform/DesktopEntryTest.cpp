#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "platform/DesktopEntry.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

TEST(DesktopEntry, ReadsTheEntryGroupAndNothingElse) {
    auto entry = DesktopEntry::parse(
        "# written by hand\n"
        "[Desktop Entry]\r\n"
        "Type = Application\n"
        "Name=Star\\sFighter\\\\2\n"
        "Name[de]=Sternenkämpfer\n"
        "Categories=Game;ArcadeGame;Semi\\;colon;\n"
        "Exec=starfighter %U\n"
        "\n"
        "[Desktop Action window]\n"
        "Name=New Window\n"
        "NoDisplay=true\n"
        "[Desktop Entry]\n"
        "Hidden=true\n");
    ASSERT_TRUE(entry) << entry.error().description();
    EXPECT_EQ(entry->type, "Application");
    EXPECT_EQ(entry->name, "Star Fighter\\2");
    EXPECT_EQ(entry->categories, (std::vector<std::string>{"Game", "ArcadeGame", "Semi;colon"}));
    EXPECT_TRUE(entry->isGame());
    EXPECT_TRUE(entry->isListedApplication());
}

TEST(DesktopEntry, ListedOnlyAsAVisibleApplication) {
    const std::string head = "[Desktop Entry]\nName=Tool\n";
    EXPECT_FALSE(DesktopEntry::parse(head + "Type=Application\nNoDisplay=true\n")->isListedApplication());
    EXPECT_FALSE(DesktopEntry::parse(head + "Type=Application\nHidden=true\n")->isListedApplication());
    EXPECT_FALSE(DesktopEntry::parse(head + "Type=Link\nURL=https://example.org\n")->isListedApplication());
    // Only the word "true" sets a flag.
    EXPECT_TRUE(DesktopEntry::parse(head + "Type=Application\nNoDisplay=1\n")->isListedApplication());
    // A category is a whole item, with its case.
    EXPECT_FALSE(DesktopEntry::parse(head + "Type=Application\nCategories=Games;game;Gamepad\n")->isGame());
}

TEST(DesktopEntry, EntriesWithoutTheGroupOrTheRequiredKeysAreCorrupt) {
    for (const char* text : {"", "Type=Application\nName=Loose\n", "[Desktop Action x]\nType=Application\nName=X\n",
                             "[Desktop Entry]\nName=No type\n", "[Desktop Entry]\nType=Application\n",
                             "[Desktop Entry]\nType=Application\nName=\n", "\177ELF\002\001\001"}) {
        auto entry = DesktopEntry::parse(text);
        ASSERT_FALSE(entry) << text;
        EXPECT_EQ(entry.error().code, ErrorCode::corrupt) << text;
    }
}

TEST(DesktopEntry, ReadsFilesThroughLinksAndReportsWhatCannotBeRead) {
    testing::TempDir dir;
    auto file = dir.write("real/editor.desktop", "[Desktop Entry]\nType=Application\nName=Editor\n");
    std::filesystem::create_symlink(file, dir.path() / "link.desktop");

    auto linked = DesktopEntry::read((dir.path() / "link.desktop").string());
    ASSERT_TRUE(linked) << linked.error().description();
    EXPECT_EQ(linked->name, "Editor");

    EXPECT_EQ(DesktopEntry::read(dir.str() + "/gone.desktop").error().code, ErrorCode::ioError);

    auto broken = DesktopEntry::read(dir.write("broken.desktop", "[Desktop Entry]\nName=Half").string());
    ASSERT_FALSE(broken);
    EXPECT_EQ(broken.error().code, ErrorCode::corrupt);
    EXPECT_NE(broken.error().message.find("broken.desktop"), std::string::npos);

    EXPECT_EQ(DesktopEntry::read(dir.write("huge.desktop", std::string(2 << 20, 'x')).string()).error().code,
              ErrorCode::corrupt);
}

}  // namespace
}  // namespace quester
