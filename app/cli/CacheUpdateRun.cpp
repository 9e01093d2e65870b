#include "CacheUpdateRun.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>

#include <fmt/format.h>

#include "ExitStatus.h"
#include "Terminal.h"
#include "cache/ContentIndexBuild.h"
#include "cache/DataConvertible.h"
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

double referenceNow() {
    double unix = std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
    return ReferenceDate::fromUnixSeconds(unix).secondsSince2001;
}

}  // namespace

CacheUpdateRun::CacheUpdateRun(ContentIndexManager& manager, bool userInitiated)
    : manager(manager), userInitiated(userInitiated), watcher([this] {
          interrupted = true;
          if (ContentIndex* index = current.load()) index->shouldCancel = true;
          awaitTermination();
      }) {}

void CacheUpdateRun::awaitTermination() {
    std::unique_lock<std::mutex> held(finishLock);
    if (finishedSignal.wait_for(held, quitWait, [this] { return finished; })) return;
    std::fputs("\nquester: the update did not stop in time and was left as it stood\n", stderr);
    std::_Exit(ExitStatus::interrupted);
}

int CacheUpdateRun::run(const std::vector<ContentIndex*>& caches, bool rebuild) {
    bool allDone = true;
    for (ContentIndex* index : caches) {
        if (interrupted) break;
        allDone = update(*index, rebuild) && allDone;
    }
    return finish(allDone);
}

int CacheUpdateRun::runDue() {
    bool allDone = true;
    std::set<ContentIndex*> done;
    if (manager.startScheduldedRefreshIfNeeded(referenceNow())) {
        while (ContentIndex* next = manager.performNextTimedIndexRefresh()) {
            if (interrupted) break;
            allDone = update(*next, false) && allDone;
            done.insert(next);
        }
    }
    for (const auto& index : manager.indexes()) {
        if (interrupted) break;
        if (!done.contains(index.get()) && manager.isDue(*index)) allDone = update(*index, false) && allDone;
    }
    return finish(allDone);
}

CacheUpdateRun::~CacheUpdateRun() {
    markFinished();
}

void CacheUpdateRun::markFinished() {
    {
        std::lock_guard<std::mutex> held(finishLock);
        finished = true;
    }
    finishedSignal.notify_all();
}

int CacheUpdateRun::finish(bool allDone) {
    if (interrupted) manager.cancelAll();
    if (Status saved = manager.save(); !saved)
        std::fprintf(stderr, "quester: cannot save the list of caches: %s\n", saved.error().message.c_str());
    markFinished();
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
    options.alwaysMirror = userInitiated;
    options.mirrorWarning = [&](const std::string& problem) {
        std::fprintf(stderr, "quester: %s: %s\n", terminalSafeText(index.displayName()).c_str(),
                     terminalSafeText(problem).c_str());
    };
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
