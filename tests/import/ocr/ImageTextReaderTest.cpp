#include "import/ImageTextReader.h"

#include <gtest/gtest.h>

#include "import/ImporterRun.h"
#include "import/PdfWriter.h"
#include "import/ocr/RenderedPage.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using testing::ImporterRun;
using testing::PdfWriter;

class ImageTextReaderTest : public ::testing::Test {
protected:
    ImporterRun import(const std::filesystem::path& path, testing::ImporterOptions options = {}) {
        return ImporterRun::of(&ImageTextReader::importText, path, std::move(options));
    }
    testing::TempDir dir;
};

TEST_F(ImageTextReaderTest, PictureOfPrintGivesItsLinesAsOneOcrPage) {
    std::string pdf = PdfWriter().page({"QUICK BROWN FOX", "JUMPS OVER THE LAZY DOG"}, 36).bytes();
    auto run = import(testing::renderedPng(pdf, dir, "scan.png"));
    EXPECT_EQ(run.resultCalls, 1);
    EXPECT_EQ(run.result.text, std::nullopt);
    EXPECT_EQ(run.result.ocrText, (ImportTextPages{{"QUICK BROWN FOX JUMPS OVER THE LAZY DOG"}}));
}

TEST_F(ImageTextReaderTest, IllustratorFileIsReadAsItsFirstDrawnPage) {
    auto path = dir.write("art.ai", PdfWriter().page({"FIRST ARTBOARD"}, 36).page({"HIDDEN LAYER"}, 36).bytes());
    auto run = import(path);
    EXPECT_EQ(run.result.text, std::nullopt);
    EXPECT_EQ(run.result.ocrText, (ImportTextPages{{"FIRST ARTBOARD"}}));
}

// Recognising a picture is one unit of work that takes seconds: a cancel must
// stop it part way, not wait for its end.
TEST_F(ImageTextReaderTest, CancelStopsRecognitionPartWayAndGivesNothing) {
    auto path = testing::renderedPng(PdfWriter().page({"QUICK BROWN FOX"}, 36).bytes(), dir, "scan.png");
    int asked = 0;
    auto run = import(path, {.shouldCancel = [&asked] { return ++asked > 0; }});
    EXPECT_EQ(run.resultCalls, 0);
    EXPECT_GT(asked, 0);
}

TEST_F(ImageTextReaderTest, UnreadableOrBlankPictureGivesNothing) {
    std::string png = testing::readFile(testing::renderedPng(PdfWriter().page({"WORDS"}, 36).bytes(), dir, "x.png"));
    EXPECT_EQ(import(dir.write("garbage.png", "\x89PNG\r\n\x1a\n not a picture")).resultCalls, 0);
    EXPECT_EQ(import(dir.write("cut.png", png.substr(0, png.size() / 2))).resultCalls, 0);
    EXPECT_EQ(import(dir.write("empty.jpg", "")).resultCalls, 0);
    EXPECT_EQ(import(testing::renderedPng(PdfWriter().page({}).bytes(), dir, "blank.png")).resultCalls, 0);
}

}  // namespace
}  // namespace quester
