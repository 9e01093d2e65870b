#include <gtest/gtest.h>
#include <poppler/cpp/poppler-document.h>
#include <poppler/cpp/poppler-page.h>

#include <thread>

#include "import/PdfReader.h"
#include "import/PdfWriter.h"
#include "import/VisionTextCollector.h"
#include "import/ocr/RenderedPage.h"
#include "testing/EnvironmentVariable.h"
#include "testing/TempDir.h"

// Drawing a page with a font the PDF doesn't carry asks fontconfig for one,
// and fontconfig keeps a few bytes of its answer for the life of the process:
// not a leak of ours, but LeakSanitizer in the sanitizer build says so.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libfontconfig.so\n";
}

namespace quester {
namespace {

using testing::PdfWriter;

TEST(VisionTextCollectorOcrTest, MissingModelGivesNoLinesRatherThanFailing) {
    testing::TempDir dir;
    auto png = testing::readFile(testing::renderedPng(PdfWriter().page({"WORDS"}, 36).bytes(), dir, "w.png"));
    testing::EnvironmentVariable noModels("TESSDATA_PREFIX", dir.str());
    VisionTextCollector collector;
    EXPECT_FALSE(collector.hasModel());
    EXPECT_TRUE(collector.linesOfTextFrom(png).empty());
}

// The import helper reads each document on a new thread: a collector kept per
// thread would load the model again for every picture.
TEST(VisionTextCollectorOcrTest, ModelLoadedOnceServesDocumentsReadOnNewThreads) {
    auto lentOnANewThread = [] {
        const VisionTextCollector* lent = nullptr;
        std::thread([&lent] { lent = &*VisionTextCollector::borrow(); }).join();
        return lent;
    };
    const VisionTextCollector* first = lentOnANewThread();
    EXPECT_EQ(lentOnANewThread(), first);

    auto one = VisionTextCollector::borrow();
    auto other = VisionTextCollector::borrow();
    EXPECT_NE(&*one, &*other) << "two users at once share one recogniser";
}

TEST(VisionTextCollectorOcrTest, HugePageIsDrawnWithinThePixelLimit) {
    // 200 inches square: 3.6 billion pixels at the page resolution.
    auto document = PdfReader::Document::load(PdfWriter().pageSize(14400, 14400).page({"HUGE"}, 400).bytes());
    ASSERT_TRUE(document);
    std::unique_ptr<poppler::page> page(document->pdf().create_page(0));
    auto image = VisionTextCollector::Image::render(*page);
    ASSERT_TRUE(image);
    EXPECT_LE(static_cast<long long>(image->width()) * image->height(), VisionTextCollector::Image::maxPixels);
    EXPECT_GT(image->width(), 5000);
    EXPECT_NEAR(image->resolution(), image->width() / 200.0, 1.0);
}

}  // namespace
}  // namespace quester
