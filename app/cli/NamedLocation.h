#pragma once

#include <string>
#include <vector>

#include "support/Result.h"

namespace quester::cli {

// The folders a location name stands for on the command line: a group's
// member folders that can be reached now (on the disk they were added from,
// when it was known), else a favourite folder's keyword, else a
// preset ("home", "all", "local", "network", "external", "backups").
// Fails with what names there are when none matches.
Result<std::vector<std::string>> foldersOfLocationNamed(const std::string& name);

}  // namespace quester::cli
