#pragma once

#include "commands/LengthCommand.h"

namespace quester {

// A bound on the length of the item's name: "max name length 20", "min name length 5".
class NameLengthCommand final : public LengthCommand<NameLengthCommand> {
public:
    static constexpr const char* what = "name";
    static std::string measuredText(const SearchResult& result);
    using LengthCommand::LengthCommand;
};

}  // namespace quester
