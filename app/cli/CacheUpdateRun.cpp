#include "CacheUpdateRun.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>

#include <fmt/format.h>

#include "ExitStatus.h"
#include "Terminal.h"
#include "cache/ContentIndexBuild.h"
#include "results/DisplayText.h"

namespace quester::cli {

namespace {

// "\r<name>: 1,234 items, 5,678/s, <folder>" cut to the terminal's width.
class ProgressLine {
public:
    explicit ProgressLine(std::string name) : name(terminalSafeText(name)) {}
    ~ProgressLine() {
        if (shown) std::fputs("\r\033[K", stderr);
    }

    void show(const BuildProgress& progress) {
        if (!enabled) return;
        double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
        double rate = seconds > 0 ? static_cast<double>(progress.items) / seconds : 0;
        std::string line = fmt::format("{}: {} items, {:.0f}/s, {}", name, progress.items, rate,
                                       terminalSafeText(progress.currentFolder));
        std::size_t width = Terminal::outputWidth();
        if (width > 1 && line.size() >= width) line.resize(width - 1);
        std::fprintf(stderr, "\r\033[K%s", line.c_str());
        std::fflush(stderr);
        shown = true;
    }

private:
    const bool enabled = Terminal::takesCursorMovement(STDERR_FILENO);
    const std::string name;
    const std::chrono::steady_clock::time_point started = std::chrono::steady_clock::now();
    bool shown = false;
};

}  // namespace

CacheUpdateRun::CacheUpdateRun(ContentIndexManager& manager)
    : manager(manager), watcher([this] {
          interrupted = true;
          if (ContentIndex* index = current.load()) index->shouldCancel = true;
      }) {}

int CacheUpdateRun::run(const std::vector<ContentIndex*>& caches, bool rebuild) {
    bool allDone = true;
    for (ContentIndex* index : caches) {
        if (interrupted) break;
        allDone = update(*index, rebuild) && allDone;
    }
    if (Status saved = manager.save(); !saved)
        std::fprintf(stderr, "quester: cannot save the list of caches: %s\n", saved.error().message.c_str());
    if (interrupted) return ExitStatus::interrupted;
    return allDone ? ExitStatus::found : ExitStatus::failed;
}

bool CacheUpdateRun::update(ContentIndex& index, bool rebuild) {
    std::string name = terminalSafeText(index.displayName());
    if (!index.targetURL()) {
        std::fprintf(stderr, "quester: %s was made elsewhere and is updated by its owner\n", name.c_str());
        return true;
    }
    if (rebuild) {
        index.mutableDocumentInfo().isDirty = true;
        if (Status saved = index.saveDocumentInfo(); !saved) {
            std::fprintf(stderr, "quester: %s: %s\n", name.c_str(), saved.error().message.c_str());
            return false;
        }
    }
    Status built = build(index);
    if (built) return true;
    if (built.error().code == ErrorCode::cancelled) return false;
    std::fprintf(stderr, "quester: %s: %s\n", name.c_str(), terminalSafeText(built.error().message).c_str());
    return false;
}

Status CacheUpdateRun::build(ContentIndex& index) {
    ContentIndexBuild::Options options;
    options.indexMode = index.documentInfo().lastIndexMode;
    ProgressLine progress(index.displayName());
    options.progress = [&](const BuildProgress& now) { progress.show(now); };
    // Nothing else of this process searches or imports; the question before
    // each folder is only whether Ctrl-C came (perhaps before the build began).
    options.pauseReason = [&]() {
        if (interrupted) index.shouldCancel = true;
        return std::optional<std::string>();
    };
    current = &index;
    Status built = ContentIndexBuild::build(index, options);
    current = nullptr;
    return built;
}

}  // namespace quester::cli
