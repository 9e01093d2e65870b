#pragma once

// A tree in a temporary folder, a cache of it, and a census of every record
// the cache holds, for the tests of building and updating caches.

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

#include "cache/ContentIndex.h"
#include "cache/ContentIndexBuild.h"
#include "testing/TempDir.h"

namespace quester::testing {

struct Census {
    std::size_t records = 0;  // "F" keys, the counter included
    std::size_t files = 0;
    std::size_t folders = 0;
    bool duplicateNames = false;
    std::set<std::string> paths;
};

inline ContentIndexBuild::Options namesOnly() {
    ContentIndexBuild::Options options;
    options.pauseReason = [] { return std::optional<std::string>(); };
    return options;
}

class BuildTest : public ::testing::Test {
protected:
    std::string cacheFile() const { return store.str() + "/tree.qscache"; }
    std::unique_ptr<ContentIndex> makeIndex() {
        auto made = ContentIndex::make(
            {cacheFile(), tree.str(), std::nullopt, std::string("tree"), CachingUpdatesTag::defaultTiming});
        EXPECT_TRUE(made) << made.error().description();
        return std::move(*made);
    }
    Status build(const ContentIndexBuild::Options& options = namesOnly()) {
        auto index = makeIndex();
        return ContentIndexBuild::build(*index, options);
    }
    // Every record, read back; names must be unique within each folder.
    Census census() {
        auto index = makeIndex();
        EXPECT_TRUE(index->open());
        Census census;
        std::map<std::uint32_t, std::set<std::string>> namesByFolder;
        auto rows = index->store().db()->makeIterator();
        std::vector<std::uint32_t> ids;
        while (auto row = (*rows)->next()) {
            if (row->first[0] != 'F') continue;
            ++census.records;
            std::optional<FSItem> item = FSItem::fromData(row->second);
            if (!item) continue;
            (item->isDirectory() ? census.folders : census.files)++;
            if (!namesByFolder[item->parentID].insert(item->name).second) census.duplicateNames = true;
            ids.push_back(item->fsid);
        }
        rows->reset();
        for (std::uint32_t id : ids) census.paths.insert(**index->pathFor(id));
        EXPECT_TRUE(index->close());
        return census;
    }
    // Large trees take empty files: a file with no data blocks is also made
    // and deleted without the disk's block discards.
    void makeTree(int folders, int filesPerFolder, std::string_view contents = "x") {
        for (int f = 0; f < folders; ++f)
            for (int i = 0; i < filesPerFolder; ++i) tree.write(fmt("d{}/sub/f{}.txt", f, i), contents);
    }
    static std::string fmt(const char* pattern, int a, int b) {
        std::string text = pattern;
        text.replace(text.find("{}"), 2, std::to_string(a));
        text.replace(text.find("{}"), 2, std::to_string(b));
        return text;
    }
    TempDir tree;
    TempDir store;
};

}  // namespace quester::testing
