#pragma once

#include <optional>
#include <string>

#include "cache/ContentIndex.h"
#include "query/CacheVC_IndexInterface.h"

namespace quester {

// What a search location holds of one cache: its identity, its name and its
// target, taken when made. The cache itself stays with its manager, which
// finds it again by the identity.
class CachedLocation final : public CacheVC_IndexInterface {
public:
    explicit CachedLocation(const ContentIndex& index)
        : id(index.id()), displayName(index.displayName()), target(index.targetURL()) {}

    Uuid uuid() const override { return id; }
    std::string name() const override { return displayName; }
    std::optional<Url> rootURL() const override {
        return target ? std::optional<Url>(Url(*target, true)) : std::nullopt;
    }

private:
    Uuid id;
    std::string displayName;
    std::optional<std::string> target;
};

}  // namespace quester
