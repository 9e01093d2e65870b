#include "commands/ContentSearchCancellation.h"

#include "import/ImportTextXPC.h"

namespace quester {

ContentSearchCancellation::ContentSearchCancellation(CancelImport cancelImport)
    : cancelImport(std::move(cancelImport)) {}

ContentSearchCancellation& ContentSearchCancellation::shared() {
    static ContentSearchCancellation instance([](const std::string& path) { ImportTextXPC::shared().cancel(path); });
    return instance;
}

void ContentSearchCancellation::startFile(const std::string& path) {
    files.access([&](Files& state) { state.currentFile = path; });
}

void ContentSearchCancellation::skipCurrentFile() {
    const auto skipped = files.access([](Files& state) {
        state.skipFile = state.currentFile;
        return state.currentFile;
    });
    if (skipped && cancelImport) cancelImport(*skipped);
}

bool ContentSearchCancellation::isSkipRequested(const std::string& path) const {
    return files.access([&](const Files& state) { return state.skipFile == path; });
}

void ContentSearchCancellation::endFile(const std::string& path) {
    files.access([&](Files& state) {
        if (state.currentFile == path) state.currentFile.reset();
        if (state.skipFile == path) state.skipFile.reset();
    });
}

}  // namespace quester
