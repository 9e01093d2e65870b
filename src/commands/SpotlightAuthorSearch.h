#pragma once

#include "commands/SpotlightTextCommand.h"

namespace quester {

// Items by an author: `author "Jane Doe"`.
class SpotlightAuthorSearch final : public SpotlightTextCommand<SpotlightAuthorSearch> {
public:
    static constexpr const char* keyword = "author";
    using SpotlightTextCommand::SpotlightTextCommand;
};

}  // namespace quester
