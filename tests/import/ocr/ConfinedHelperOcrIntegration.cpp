#include <gtest/gtest.h>

#include "RenderedPage.h"
#include "import/ImportTextXPC.h"
#include "import/PdfWriter.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using testing::TempDir;

// The helper reads under Landlock: the OCR model, the fonts that draw a PDF
// page and the PDF reader must all work with only the system's data folders
// readable.
TEST(ConfinedHelperOcrIntegration, HelperReadsPdfTextAndRecognisesPagesAndImages) {
    TempDir dir;
    std::string pdf = testing::PdfWriter()
                          .page({"Quarterly Report", "the yearly total"}, 28)
                          .page({"Second Page Heading"}, 28)
                          .bytes();
    auto pdfPath = dir.write("report.pdf", pdf).string();
    auto pngPath = testing::renderedPng(pdf, dir, "scan.png").string();
    ImportServiceOptions options;
    options.helperPath = QUESTER_IMPORT_HELPER;
    ImportTextXPC service(options);

    std::optional<ImportTextResult> read;
    service.importText(pdfPath, false, INT64_MAX, true, {}, [&](auto error, auto result) {
        ASSERT_FALSE(error.has_value()) << error->description();
        read = std::move(result);
    });
    ASSERT_TRUE(read.has_value());
    ASSERT_TRUE(read->text.has_value());
    ASSERT_EQ(read->text->size(), 2u);
    EXPECT_NE((*read->text)[1].text.find("Second Page Heading"), std::string::npos);
    ASSERT_TRUE(read->ocrText.has_value());
    EXPECT_NE((*read->ocrText)[0].text.find("yearly total"), std::string::npos) << (*read->ocrText)[0].text;

    auto [error, words] = service.wordsInFile(pngPath, true);
    ASSERT_FALSE(error.has_value()) << error->description();
    ASSERT_TRUE(words.has_value());
    EXPECT_GE((*words)["quarterly"], 1u);
    EXPECT_GE((*words)["total"], 1u);
}

}  // namespace
}  // namespace quester
