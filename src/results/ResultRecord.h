#pragma once

#include <nlohmann/json.hpp>

#include <string>

#include "results/UINode.h"

namespace quester {

// One result as `quester search --format json` writes it: a flat object with
// fixed keys for scripts (doc/json-output.md), never the internal encoding.
// Reads the item's tags from the disk when the row hasn't loaded them.
// Thread-safe for different rows.
class ResultRecord {
public:
    static nlohmann::ordered_json of(const UINode& row);
    // `of` as one line of JSON without its line feed; text that isn't UTF-8
    // is written with U+FFFD.
    static std::string jsonLine(const UINode& row);
};

}  // namespace quester
