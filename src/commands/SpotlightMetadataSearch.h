#pragma once

#include "commands/SpotlightTextCommand.h"

namespace quester {

// Items whose metadata holds a text: `metadata "comedy"`.
class SpotlightMetadataSearch final : public SpotlightTextCommand<SpotlightMetadataSearch> {
public:
    static constexpr const char* keyword = "metadata";
    using SpotlightTextCommand::SpotlightTextCommand;
};

}  // namespace quester
