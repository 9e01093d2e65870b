#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "cache/ContentIndex.h"
#include "cache/ContentIndexBuild.h"
#include "import/ImportTextXPC.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using testing::TempDir;

class ContentBuildTest : public ::testing::Test {
protected:
    ContentBuildTest() : importer(helperOptions()) {}
    static ImportServiceOptions helperOptions() {
        ImportServiceOptions options = ImportServiceOptions::fromEnvironment();
        options.helperPath = QUESTER_IMPORT_HELPER;
        return options;
    }
    std::unique_ptr<ContentIndex> makeIndex() {
        auto made = ContentIndex::make({store.str() + "/docs.qscache", tree.str(), std::nullopt, std::string("docs"),
                                        CachingUpdatesTag::defaultTiming});
        EXPECT_TRUE(made);
        return std::move(*made);
    }
    Status build(ContentIndexMode mode) {
        ContentIndexBuild::Options options;
        options.indexMode = mode;
        options.importer = &importer;
        options.pauseReason = [] { return std::optional<std::string>(); };
        auto index = makeIndex();
        return ContentIndexBuild::build(*index, options);
    }
    std::set<std::string> documentsOf(const std::string& word) {
        auto index = makeIndex();
        EXPECT_TRUE(index->open());
        std::set<std::string> paths;
        if (std::optional<WordContainer> container = index->words().findExact(word))
            for (const auto& [id, count] : container->documentIDs())
                if (auto path = *index->pathFor(id)) paths.insert(*path);
        EXPECT_TRUE(index->close());
        return paths;
    }
    TempDir tree;
    TempDir store;
    ImportTextXPC importer;
};

TEST_F(ContentBuildTest, WordsOfNewDocumentsArePostedAndRemovedDocumentsJoinTheDeadList) {
    tree.write("a/invoice.txt", "Invoice for the garden. Invoice paid.");
    tree.write("b/letter.txt", "Dear friend, the garden is green.");
    ASSERT_TRUE(build(ContentIndexMode::textDocuments));
    EXPECT_EQ(documentsOf("garden"),
              (std::set<std::string>{tree.str() + "/a/invoice.txt", tree.str() + "/b/letter.txt"}));
    EXPECT_EQ(documentsOf("invoice"), (std::set<std::string>{tree.str() + "/a/invoice.txt"}));
    {
        auto index = makeIndex();
        ASSERT_TRUE(index->open());
        EXPECT_EQ(index->words().findExact("invoice")->documentIDs().begin()->second, 2);
        EXPECT_TRUE(index->hasTextContent());
        ASSERT_TRUE(index->close());
    }
    std::filesystem::remove(tree.path() / "b/letter.txt");
    tree.write("b/note.txt", "A garden note.");
    ASSERT_TRUE(build(ContentIndexMode::textDocuments));
    EXPECT_EQ(documentsOf("garden"),
              (std::set<std::string>{tree.str() + "/a/invoice.txt", tree.str() + "/b/note.txt"}));
    EXPECT_TRUE(documentsOf("friend").empty());
    auto index = makeIndex();
    ASSERT_TRUE(index->open());
    EXPECT_EQ(index->words().loadDeadIds()->size(), 1u);
    ASSERT_TRUE(index->close());
}

TEST_F(ContentBuildTest, NamesOnlyWritesNoWordsAndNoDeadList) {
    tree.write("a/invoice.txt", "Invoice for the garden.");
    ASSERT_TRUE(build(ContentIndexMode::off));
    std::filesystem::remove(tree.path() / "a/invoice.txt");
    ASSERT_TRUE(build(ContentIndexMode::off));
    auto index = makeIndex();
    ASSERT_TRUE(index->open());
    EXPECT_TRUE(index->words().allWords()->empty());
    EXPECT_FALSE(index->store().get<std::string>("K", "dead")->has_value());
    ASSERT_TRUE(index->close());
}

}  // namespace
}  // namespace quester
