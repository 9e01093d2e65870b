#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <stdexcept>
#include <vector>

#include "import/ImportContext.h"
#include "import/ImportTextResult.h"
#include "platform/ReadableFile.h"

namespace quester::testing {

// What an importer gave for one file: its pages gathered as the import layer
// gathers them, every progress report, and how often it called `result`.
struct ImporterOptions {
    std::int64_t maxLength = INT64_MAX;
    bool useOCR = false;
    std::function<bool()> shouldCancel = nullptr;
    // What `result` answers.
    bool goOn = true;
};

struct ImporterRun {
    ImportTextResult result;
    std::vector<float> progress;
    int resultCalls = 0;

    static ImporterRun of(Importer importer, const std::filesystem::path& path, ImporterOptions options = {}) {
        auto file = ReadableFile::open(path.string());
        if (!file) throw std::runtime_error(file.error().message);
        ImporterRun run;
        auto append = [](std::optional<ImportTextPages>& into, std::optional<ImportTextPages> pages) {
            if (!pages) return;
            if (!into) into.emplace();
            into->insert(into->end(), pages->begin(), pages->end());
        };
        ImportContext context{*file,
                              options.maxLength,
                              options.useOCR,
                              [&run](float percentage) { run.progress.push_back(percentage); },
                              options.shouldCancel,
                              [&](std::optional<ImportTextPages> text, std::optional<ImportTextPages> ocrText) {
                                  ++run.resultCalls;
                                  append(run.result.text, std::move(text));
                                  append(run.result.ocrText, std::move(ocrText));
                                  return options.goOn;
                              }};
        importer(context);
        return run;
    }
};

}  // namespace quester::testing
