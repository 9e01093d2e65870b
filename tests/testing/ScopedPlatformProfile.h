#pragma once

#include "platform/PlatformProfile.h"

namespace quester::testing {

// Makes `profile` the current one for the life of the object. Header-only:
// tests that use it link quester_platform.
class ScopedPlatformProfile {
public:
    explicit ScopedPlatformProfile(PlatformProfile profile)
        : previous(PlatformProfile::setCurrent(std::move(profile))) {}
    ~ScopedPlatformProfile() { PlatformProfile::restoreCurrent(previous); }
    ScopedPlatformProfile(const ScopedPlatformProfile&) = delete;
    ScopedPlatformProfile& operator=(const ScopedPlatformProfile&) = delete;

private:
    std::shared_ptr<const PlatformProfile> previous;
};

}  // namespace quester::testing
