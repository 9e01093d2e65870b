#include "support/Clock.h"

namespace quester {

const SystemClock& SystemClock::shared() {
    static const SystemClock clock;
    return clock;
}

}  // namespace quester
