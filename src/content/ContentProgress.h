#pragma once

#include <functional>

namespace quester {

// How a content searcher reports how far it got and learns that it should
// stop. Either callback may be empty.
struct ContentProgress {
    std::function<void(float)> report;
    std::function<bool()> isCancelled;

    // Reports to nobody and is never cancelled.
    static ContentProgress none() { return {}; }

    void reportPercentage(float percentage) const {
        if (report) report(percentage);
    }
    bool cancelled() const { return isCancelled && isCancelled(); }
};

}  // namespace quester
