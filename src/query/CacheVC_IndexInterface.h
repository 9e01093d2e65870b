#pragma once

#include <optional>
#include <string>

#include "platform/Url.h"
#include "support/Uuid.h"

namespace quester {

// What a location needs to know of a disk cache: its identity, its name and the
// folder or disk it covers. The cache layer implements it.
class CacheVC_IndexInterface {
public:
    virtual ~CacheVC_IndexInterface() = default;
    virtual Uuid uuid() const = 0;
    virtual std::string name() const = 0;
    // None for a cache that covers no one folder: it then covers every path.
    virtual std::optional<Url> rootURL() const = 0;
};

}  // namespace quester
