#pragma once

#include <string>
#include <vector>

#include "cache/ContentIndex.h"
#include "support/Result.h"

namespace quester::cli {

// What a location name stands for on the command line: folders to search,
// or a disk cache, which answers also while its disk is not connected.
struct NamedLocation {
    std::vector<std::string> folders;
    const ContentIndex* cache = nullptr;
};

// A group's member folders that can be reached now (on the disk they were
// added from, when it was known), else a favourite folder's keyword, else a
// disk cache of `caches` by its name, else a preset ("home", "all", "local",
// "network", "external", "backups"). Fails with what names there are when
// none matches.
Result<NamedLocation> locationNamed(const std::string& name, const std::vector<ContentIndex*>& caches);

}  // namespace quester::cli
