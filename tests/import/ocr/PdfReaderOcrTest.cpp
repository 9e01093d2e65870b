#include <gtest/gtest.h>

#include "import/ImporterRun.h"
#include "import/PdfReader.h"
#include "import/PdfWriter.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using testing::PdfWriter;

// Small print is the case a 72 dots-per-inch drawing loses: 8-point letters
// would be 8 pixels high.
TEST(PdfReaderOcrTest, WithOcrEachPageGivesAnOcrPageBesideItsTextPageAndSmallPrintIsRead) {
    testing::TempDir dir;
    auto path =
        dir.write("two.pdf", PdfWriter().page({"LARGE HEADING"}, 36).page({"small print matters here"}, 8).bytes());
    auto run = testing::ImporterRun::of(&PdfReader::importText, path, {.useOCR = true});
    ASSERT_TRUE(run.result.text);
    ASSERT_TRUE(run.result.ocrText);
    EXPECT_EQ(run.result.text->size(), 2u);
    EXPECT_EQ(*run.result.ocrText, (ImportTextPages{{"LARGE HEADING"}, {"small print matters here"}}));
    EXPECT_EQ(run.resultCalls, 2);
}

}  // namespace
}  // namespace quester
