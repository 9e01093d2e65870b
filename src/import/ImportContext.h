#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "import/ImportTextResult.h"
#include "platform/ReadableFile.h"

namespace quester {

// Takes the pages an importer found (either list may be absent) and answers
// whether the importer should go on.
using ImportResultHandler =
    std::function<bool(std::optional<ImportTextPages> text, std::optional<ImportTextPages> ocrText)>;

// What an importer is handed: the open document and how to read it. The
// importer reads only through `file` (the import helper can open nothing
// else), calls `result` with what it found, and gives nothing on failure.
struct ImportContext {
    const ReadableFile& file;
    // Characters after which a reader may stop early; readers that can't
    // stop part way ignore it.
    std::int64_t maxLength = INT64_MAX;
    bool useOCR = false;
    // Percentages from 0 to 100; may be empty.
    std::function<void(float)> progressHandler;
    // Asked between units of work; may be empty.
    std::function<bool()> shouldCancel;
    ImportResultHandler result;

    void reportProgress(float percentage) const {
        if (progressHandler) progressHandler(percentage);
    }
    bool cancelled() const { return shouldCancel && shouldCancel(); }
};

// A reader of one kind of document.
using Importer = void (*)(const ImportContext& context);

}  // namespace quester
