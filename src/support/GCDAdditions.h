#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "support/Operation.h"
#include "support/SourceLocation.h"

namespace quester {

// Delayed work on the main loop (MainLoop::shared()) that a later call can
// cancel. The delay is waited out on a private timer thread, so long delays
// never occupy the loop; only then does the block go to the loop. Blocks
// always run on the loop's thread. All operations are thread-safe.
class GCDAdditions {
public:
    using Block = std::function<void()>;

    // Runs `block` on the main loop once `afterDelay` has passed, unless the
    // returned operation is cancelled first. With a key, the key's slot is
    // cleared after the block has run (if it still holds this operation).
    static std::shared_ptr<Operation> perform(std::chrono::duration<double> afterDelay, std::optional<std::string> key,
                                              Block block);

    // Cancels the key's earlier operation if it hasn't begun (one that has
    // begun runs to its end), then performs `block` after `afterDelay` under
    // that key. A burst of calls thus ends in one late run of the last block.
    static std::shared_ptr<Operation> cancelPreviousThenPerform(const std::string& key,
                                                                std::chrono::duration<double> afterDelay, Block block);
    // The same, keyed by the calling line ("<file stem> #<line>").
    static std::shared_ptr<Operation> cancelPreviousThenPerform(std::chrono::duration<double> afterDelay, Block block,
                                                                SourceLocation where = SourceLocation::current());
};

}  // namespace quester
