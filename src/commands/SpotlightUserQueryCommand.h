#pragma once

#include "commands/SpotlightTextCommand.h"

namespace quester {

// A query in the metadata index's own language: `spotlight "kind:pdf"`.
class SpotlightUserQueryCommand final : public SpotlightTextCommand<SpotlightUserQueryCommand> {
public:
    static constexpr const char* keyword = "spotlight";
    using SpotlightTextCommand::SpotlightTextCommand;
};

}  // namespace quester
