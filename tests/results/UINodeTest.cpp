#include <gtest/gtest.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "results/UINode.h"
#include "stores/Preferences.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using Action = UINode::VisibleCheckResultAction;

SearchResult resultFor(const std::string& path, std::uint64_t size = 0, bool isDirectory = false) {
    SearchResult result;
    result.url = Url(path);
    result.size = size;
    result.isDirectory = isDirectory;
    return result;
}

TEST(UINodeFromResult, kindAndSizeTextsComeFromTheDirectoryFlagAndExtension) {
    struct Case {
        const char* path;
        std::uint64_t size;
        bool isDirectory;
        UINode::Kind kind;
        const char* displayKind;
        const char* displaySize;
    };
    for (const Case& c :
         {Case{"/home/me/docs/Report.PDF", 1234567, false, UINode::Kind::file, "PDF document", "1.2 MB"},
          Case{"/d/data.weird", 0, false, UINode::Kind::file, "Document", "--"},
          Case{"/d/Projects", 0, true, UINode::Kind::folder, "Folder", "--"},
          Case{"/d/odd.zip", 0, true, UINode::Kind::folder, "ZIP archive", "--"},
          Case{"/d/Tool.app", 0, true, UINode::Kind::package, "Application", "--"}}) {
        const auto node = UINode::create(resultFor(c.path, c.size, c.isDirectory));
        EXPECT_EQ(node->dynamic().kind, c.kind) << c.path;
        EXPECT_EQ(node->dynamic().displayKind, c.displayKind) << c.path;
        EXPECT_EQ(node->dynamic().displayTotalSize, c.displaySize) << c.path;
    }
    const auto report = UINode::create(resultFor("/home/me/docs/Report.PDF"));
    EXPECT_EQ(report->displayName(), "Report.PDF");
    EXPECT_EQ(report->displayPath(), "/home/me/docs");
    EXPECT_EQ(report->displayInside(), "docs");
}

TEST(UINodeFromResult, foundItemsBecomeChildRowsThatNeedNoCheckAndCountInTheName) {
    SearchResult empty = resultFor("/d/notes.txt");
    empty.foundItems = std::vector<FoundItem>{};
    EXPECT_EQ(UINode::create(empty)->dynamic().kind, UINode::Kind::file);
    EXPECT_EQ(UINode::create(empty)->displayName(), "notes.txt (0)");

    SearchResult result = resultFor("/d/notes.txt");
    result.foundItems =
        std::vector<FoundItem>{{FoundItem::Category::summary, "first line", "", "", 0, 1700000000, std::nullopt},
                               {FoundItem::Category::summary, "second", "", "", 12, 0, std::nullopt}};
    auto node = UINode::create(result, std::make_shared<const HighlightWords>(HighlightWords{{"line"}, true}));
    const auto changes = node->dynamic();
    EXPECT_EQ(changes.kind, UINode::Kind::fileWithFoundItems);
    EXPECT_EQ(node->displayName(), "notes.txt (2)");
    ASSERT_EQ(changes.children.size(), 2u);
    const auto& child = changes.children[0];
    EXPECT_EQ(child->displayName(), "first line");
    EXPECT_EQ(child->displayWordsToHighlight(), std::vector<std::string>{"line"});
    EXPECT_EQ(child->dynamic().kind, UINode::Kind::foundItem);
    EXPECT_TRUE(child->dynamic().hasLoadedAdditionalDetails);
    EXPECT_EQ(changes.children[1]->dynamic().displayTotalSize, "12 bytes");
}

class VisibleCheckTest : public ::testing::Test {
protected:
    testing::TempDir dir;
    Preferences preferences{""};
};

TEST_F(VisibleCheckTest, aMissingItemIsRemovedOrStruckThroughAsItAsks) {
    SearchResult result = resultFor(dir.str() + "/gone.txt");
    result.checkToSeeIfItExists = true;
    EXPECT_EQ(UINode::create(result)->visibleOnScreenChecksModern(VisualState::list, preferences).action,
              Action::remove);
    result.checkToSeeIfItExists = false;
    result.strikeThroughDisplayNameIfMissing = true;
    auto check = UINode::create(result)->visibleOnScreenChecksModern(VisualState::list, preferences);
    EXPECT_EQ(check.action, Action::changed);
    EXPECT_TRUE(check.changes.displayStrikeThroughText);
}

TEST_F(VisibleCheckTest, presentItemIsCheckedOncePerHint) {
    SearchResult result = resultFor(dir.write("here.txt", "x").string());
    result.strikeThroughDisplayNameIfMissing = true;
    result.checkToSeeIfItExists = true;
    auto node = UINode::create(result);
    auto first = node->visibleOnScreenChecksModern(VisualState::list, preferences);
    EXPECT_EQ(first.action, Action::changed);
    EXPECT_FALSE(first.changes.displayStrikeThroughText);
    node->setDynamic(first.changes);
    EXPECT_EQ(node->visibleOnScreenChecksModern(VisualState::list, preferences).action, Action::none);
    auto icons = node->visibleOnScreenChecksModern(VisualState::icons, preferences);
    EXPECT_EQ(icons.action, Action::changed);
    EXPECT_EQ(icons.changes.visualStatesChecked, (std::vector<VisualState>{VisualState::list, VisualState::icons}));
}

TEST_F(VisibleCheckTest, symbolicLinkShowsAsAliasAndReloads) {
    const auto target = dir.write("target.txt", "x");
    const std::string link = dir.str() + "/link.txt";
    ASSERT_EQ(symlink(target.c_str(), link.c_str()), 0);
    auto check = UINode::create(resultFor(link))->visibleOnScreenChecksModern(VisualState::list, preferences);
    EXPECT_EQ(check.action, Action::reload);
    EXPECT_EQ(check.changes.displayKind, "Alias");
}

TEST_F(VisibleCheckTest, tagsAreReadOnlyWhenTheirColumnIsVisible) {
    const std::string path = dir.write("tagged.txt", "x").string();
    const std::string tags = "red,work";
    if (setxattr(path.c_str(), "user.xdg.tags", tags.data(), tags.size(), 0) != 0) {
        GTEST_SKIP() << "the temp folder takes no user attributes";
    }
    auto node = UINode::create(resultFor(path));
    EXPECT_FALSE(node->visibleOnScreenChecksModern(VisualState::list, preferences).changes.hasLoadedTagNames);
    ASSERT_TRUE(preferences.setValue("tagsIsVisible", true).ok());
    const auto changes = node->visibleOnScreenChecksModern(VisualState::list, preferences).changes;
    EXPECT_EQ(changes.tagNames, (std::vector<std::string>{"red", "work"}));
}

TEST(UINodeFromURL, readsKindSizeAndChildrenFromTheDisk) {
    testing::TempDir dir;
    dir.write("top/b10.txt", "0123456789");
    dir.write("top/b9.txt", "x");
    dir.write("top/.hidden", "x");
    dir.mkdir("top/A");
    Preferences preferences{""};
    auto folder = UINode::create(Url(dir.str() + "/top"), nullptr);
    EXPECT_EQ(folder->dynamic().kind, UINode::Kind::folder);
    folder->loadChildren(Column::name, false, std::nullopt, preferences);
    const auto children = folder->dynamic().children;
    ASSERT_EQ(children.size(), 3u);
    EXPECT_EQ(children[0]->displayName(), "A");
    EXPECT_EQ(children[1]->displayName(), "b9.txt");
    EXPECT_EQ(children[2]->displayName(), "b10.txt");
    EXPECT_EQ(children[2]->dynamic().totalSize, 10u);

    // A second expansion keeps the rows until they are purged.
    dir.write("top/c.txt");
    folder->loadChildren(Column::name, false, std::nullopt, preferences);
    EXPECT_EQ(folder->dynamic().children, children);
    folder->purgeChildren();
    folder->loadChildren(Column::name, false, std::nullopt, preferences);
    EXPECT_EQ(folder->dynamic().children.size(), 4u);
}

TEST(UINodeFromURL, replacingTakesTheOldIdAndAnUnlistableFolderHasNoChildren) {
    auto old = UINode::create(resultFor("/d/a"));
    EXPECT_EQ(UINode::create(Url("/nonexistent/path/x"), nullptr, old.get())->replacedID(), old->id);
    EXPECT_FALSE(UINode::nodesForContentsOfFolder(Url("/nonexistent/folder", true)).ok());
    EXPECT_TRUE(UINode::nodesForContentsOfFolderIgnoringError(Url("/nonexistent/folder", true)).empty());
}

}  // namespace
}  // namespace quester
