#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "import/ImportContext.h"
#include "platform/ReadableFile.h"
#include "testing/TempDir.h"

namespace quester::testing {

// How an importer is run on a document made for the test.
struct ImportRun {
    std::string_view fileName = "document";
    std::int64_t maxLength = INT64_MAX;
    bool cancel = false;
};

// The one page `importer` gives for a file holding `contents`; none when it
// gives nothing. A second page or OCR text fails the test.
inline std::optional<std::string> importedText(Importer importer, std::string_view contents, ImportRun run = {}) {
    TempDir folder;
    auto file = ReadableFile::open(folder.write(run.fileName, contents).string());
    if (!file) {
        ADD_FAILURE() << file.error().description();
        return std::nullopt;
    }
    std::optional<std::string> text;
    int calls = 0;
    ImportContext context{*file,
                          run.maxLength,
                          false,
                          {},
                          [&] { return run.cancel; },
                          [&](std::optional<ImportTextPages> pages, std::optional<ImportTextPages> ocrPages) {
                              ++calls;
                              EXPECT_FALSE(ocrPages.has_value());
                              if (pages && pages->size() == 1) text = pages->front().text;
                              return true;
                          }};
    importer(context);
    EXPECT_LE(calls, 1);
    EXPECT_EQ(calls == 1, text.has_value()) << "a result must hold exactly one page";
    return text;
}

}  // namespace quester::testing
