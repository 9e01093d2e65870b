#include <gtest/gtest.h>

#include <set>
#include <string>

#include "commands/ContentSearchCommand.h"
#include "content/TarWriter.h"
#include "import/ZipWriter.h"
#include "query/QueryContainer.h"
#include "query/SearchDataSourceDelegate.h"
#include "query/SearchResult.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

// Records which archive members were read.
class MemberFeedback : public SearchDataSourceDelegate {
public:
    bool shouldStop() const override { return false; }
    bool showHiddenItems() const override { return true; }
    void supplySearchResults(std::vector<SearchResult>, SearchDataSource&) override {}
    void supplyIncreaseNumberOfFilesContentSearched(std::int64_t count) override { filesRead += count; }
    void searchingInsideFile(const std::string& name, bool inProgress, float percentage) override {
        if (inProgress && percentage == 0.0f) membersRead.insert(name);
    }
    std::int64_t filesRead = 0;
    std::set<std::string> membersRead;
};

class ContainerContentSearch : public ::testing::Test {
protected:
    // A command looking for "total" with `disabled` switched off.
    static ContentSearchCommand lookingForTotal(std::set<ContentSearchType> disabled) {
        ContentSearchCommand command("total", "", {});
        command.disabledContentTypes = std::move(disabled);
        return command;
    }

    CommandApplyResult apply(ContentSearchCommand& command, const std::string& name, const std::string& bytes) {
        result = SearchResult();
        result.url = Url(tree.write(name, bytes).string());
        result.size = bytes.size();
        result.searchResultSuppliedBy = SearchResultSupplier::fileSystem;
        return command.commandImpApply(result, &feedback, query);
    }

    testing::TempDir tree;
    const QueryContainer query;
    MemberFeedback feedback;
    SearchResult result;
};

std::string reportZip() {
    return testing::ZipWriter()
        .add("total.txt", "nothing to see")
        .add("docs/notes.txt", "the total is one\nand the total is two\n")
        .finish();
}

TEST_F(ContainerContentSearch, WithOnlyTheContentsTypeAMembersTextMatchesButItsNameDoesNot) {
    auto command = lookingForTotal({ContentSearchType::zipDirectory});
    ASSERT_EQ(apply(command, "report.zip", reportZip()), CommandApplyResult::accept);
    ASSERT_TRUE(result.foundItems.has_value());
    ASSERT_EQ(result.foundItems->size(), 1u);
    const FoundItem& member = result.foundItems->front();
    EXPECT_EQ(member.type, FoundItem::Category::file);
    EXPECT_EQ(member.title, "notes.txt  (2 matches)");
    EXPECT_EQ(member.location, "docs/notes.txt");
    EXPECT_EQ(feedback.membersRead, (std::set<std::string>{"total.txt", "notes.txt"}));

    auto namesToo = lookingForTotal({});
    ASSERT_EQ(apply(namesToo, "report.zip", reportZip()), CommandApplyResult::accept);
    ASSERT_EQ(result.foundItems->size(), 2u);
    EXPECT_EQ(result.foundItems->front().location, "total.txt");
}

TEST_F(ContainerContentSearch, AnArchiveWithBothTypesDisabledIsExcludedUnread) {
    auto command = lookingForTotal({ContentSearchType::zipDirectory, ContentSearchType::zipContents});
    EXPECT_EQ(apply(command, "report.zip", reportZip()), CommandApplyResult::exclude);
    EXPECT_EQ(feedback.filesRead, 0);
}

// Exactly the cap is read; a byte more is passed over unextracted.
TEST_F(ContainerContentSearch, MembersAboveFiftyMebibytesArePassedOver) {
    const std::string archive = testing::ZipWriter()
                                    .add("over.txt", std::string(ContentSearchCommand::maxContainerEntrySize + 1, 'a'))
                                    .add("edge.txt", std::string(ContentSearchCommand::maxContainerEntrySize, 'a'))
                                    .finish();
    auto command = lookingForTotal({ContentSearchType::zipDirectory});
    EXPECT_EQ(apply(command, "big.zip", archive), CommandApplyResult::exclude);
    EXPECT_EQ(feedback.membersRead, std::set<std::string>{"edge.txt"});
}

TEST_F(ContainerContentSearch, AtMostFiveHundredTarMembersAreReadAndFoldersDontCount) {
    testing::TarWriter writer;
    writer.add("folder/", "", '5');
    for (int i = 1; i <= 501; ++i) writer.add("m" + std::to_string(i) + ".txt", i == 501 ? "total" : "none");
    auto command = lookingForTotal({ContentSearchType::tarDirectory});
    EXPECT_EQ(apply(command, "many.tar", writer.finish()), CommandApplyResult::exclude);
    EXPECT_EQ(feedback.filesRead, 500);
    EXPECT_EQ(feedback.membersRead.count("m500.txt"), 1u);
    EXPECT_EQ(feedback.membersRead.count("m501.txt"), 0u);
}

}  // namespace
}  // namespace quester
