#pragma once

#include "commands/LengthCommand.h"

namespace quester {

// A bound on the length of the item's whole path: "max path length 100", "min path length 10".
class PathLengthCommand final : public LengthCommand<PathLengthCommand> {
public:
    static constexpr const char* what = "path";
    static std::string measuredText(const SearchResult& result);
    using LengthCommand::LengthCommand;
};

}  // namespace quester
