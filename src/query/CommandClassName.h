#pragma once

#include <string>

#include "query/Command.h"

namespace quester {

// The class name of a command without its namespace ("SizeCommand"). The query
// container sorts and classifies commands by it, and `quester explain` shows it.
std::string commandClassName(const Command& command);

}  // namespace quester
