#pragma once

#include <string>
#include <vector>

#include "cache/ContentIndex.h"
#include "support/Result.h"

namespace quester::cli {

// What a location name stands for on the command line: folders to search,
// and disk caches, which answer also while their disks are not connected.
struct NamedLocation {
    struct Cache {
        const ContentIndex* cache = nullptr;
        // A cache that only covers a group's member stands back while the
        // location has folders of its own to search.
        bool isExplicit = true;
    };
    std::vector<std::string> folders;
    std::vector<Cache> caches;
};

// A group: its members that can be reached now (on the disk they were added
// from, when it was known), its cache members, and the caches that cover its
// members; else a favourite folder's keyword, else a disk cache of `caches`
// by its name, else a preset ("home", "all", "local", "network", "external",
// "backups"). Fails with what names there are when none matches.
Result<NamedLocation> locationNamed(const std::string& name, const std::vector<ContentIndex*>& caches);

}  // namespace quester::cli
