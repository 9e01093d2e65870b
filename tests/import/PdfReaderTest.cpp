#include "import/PdfReader.h"

#include <gtest/gtest.h>

#include "import/ImporterRun.h"
#include "import/PdfWriter.h"
#include "support/Logger.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using testing::ImporterRun;
using testing::PdfWriter;

class PdfReaderTest : public ::testing::Test {
protected:
    std::filesystem::path write(const std::string& name, const std::string& bytes) { return dir.write(name, bytes); }
    ImporterRun import(const std::filesystem::path& path, testing::ImporterOptions options = {}) {
        return ImporterRun::of(&PdfReader::importText, path, std::move(options));
    }
    std::filesystem::path threePages() {
        return write("three.pdf", PdfWriter().page({"alpha page"}).page({"beta page"}).page({"gamma page"}).bytes());
    }
    testing::TempDir dir;
};

TEST_F(PdfReaderTest, TwoPagesGiveTwoTextPagesSoLocatorsNameRealPages) {
    auto path = write("two.pdf", PdfWriter().page({"first page", "second line"}).page({"other page"}).bytes());
    auto run = import(path);
    ASSERT_TRUE(run.result.text);
    ASSERT_EQ(run.result.text->size(), 2u);
    EXPECT_EQ(run.result.ocrText, std::nullopt);
    EXPECT_NE((*run.result.text)[0].text.find("first page\nsecond line"), std::string::npos);
    EXPECT_EQ((*run.result.text)[1].text.find("other page"), 0u);

    std::size_t secondPageStart = (*run.result.text)[0].text.size() + 1;
    EXPECT_EQ(run.result.locator(secondPageStart, false), "Page 2, line 1");
    EXPECT_EQ(run.result.locator(secondPageStart - 1, false).rfind("Page 1, line ", 0), 0u);
    EXPECT_EQ(run.progress, (std::vector<float>{0, 50, 100, 100}));
}

TEST_F(PdfReaderTest, PageWithoutTextStillGivesAPageSoLaterNumbersStayRight) {
    auto run = import(write("gap.pdf", PdfWriter().page({"before"}).page({}).page({"after"}).bytes()));
    ASSERT_TRUE(run.result.text);
    ASSERT_EQ(run.result.text->size(), 3u);
    EXPECT_EQ((*run.result.text)[1].text.find_first_not_of("\n\f "), std::string::npos);
    EXPECT_EQ((*run.result.text)[2].text.find("after"), 0u);
}

TEST_F(PdfReaderTest, MaxLengthStopsAfterThePageThatCrossesIt) {
    auto path = threePages();
    auto whole = import(path);
    ASSERT_TRUE(whole.result.text);
    ASSERT_EQ(whole.result.text->size(), 3u);
    auto firstLength = static_cast<std::int64_t>((*whole.result.text)[0].text.size());

    EXPECT_EQ(import(path, {.maxLength = firstLength}).result.text->size(), 1u);
    EXPECT_EQ(import(path, {.maxLength = firstLength + 1}).result.text->size(), 2u);
    auto none = import(path, {.maxLength = 0});
    EXPECT_EQ(none.resultCalls, 0);
    EXPECT_EQ(none.progress, (std::vector<float>{0, 100}));
}

TEST_F(PdfReaderTest, CancelOrRefusedResultStopsBetweenPagesWithAFinalReport) {
    auto path = threePages();
    auto cancelled = import(path, {.shouldCancel = [] { return true; }});
    EXPECT_EQ(cancelled.resultCalls, 1);
    ASSERT_FALSE(cancelled.progress.empty());
    EXPECT_EQ(cancelled.progress.back(), 100);

    auto refused = import(path, {.goOn = false});
    EXPECT_EQ(refused.resultCalls, 1);
    EXPECT_EQ(refused.progress.back(), 100);
}

// The helper's standard output is no console; a progress line there would be
// lost, or worse, mixed into what the helper sends.
TEST_F(PdfReaderTest, ProgressLineGoesToTheLogAndNotToStandardOutput) {
    auto path = threePages();
    auto urls = Logger::shared().logURLs();
    ASSERT_TRUE(urls);
    ::testing::internal::CaptureStdout();
    Logger::shouldLog = true;
    import(path);
    Logger::shouldLog = false;
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
    std::string log = testing::readFile(urls->currentLogURL);
    EXPECT_NE(log.find("importPDF: three.pdf 33%\n"), std::string::npos) << log;
    EXPECT_NE(log.find("importPDF: three.pdf 100%\n"), std::string::npos) << log;
}

TEST_F(PdfReaderTest, PasswordLockedPdfGivesNothing) {
    auto run = import(write("locked.pdf", PdfWriter().page({"secret"}).lockedByPassword().bytes()));
    EXPECT_EQ(run.resultCalls, 0);
    EXPECT_TRUE(run.progress.empty());
}

TEST_F(PdfReaderTest, EmptyGarbageOrTruncatedFileGivesNothingAndWritesNoErrors) {
    std::string whole = PdfWriter().page({"first"}).page({"second"}).bytes();
    ::testing::internal::CaptureStderr();
    for (const auto& [name, bytes] : {std::pair<std::string, std::string>{"empty.pdf", ""},
                                      {"garbage.pdf", "%PDF-1.7\n\x01\x02 obj << /Type /Catalog\xff\xfe"},
                                      {"truncated.pdf", whole.substr(0, whole.size() / 3)}}) {
        EXPECT_EQ(import(write(name, bytes)).resultCalls, 0) << name;
    }
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace quester
