#pragma once

#include <string>
#include <vector>

namespace quester {

// What an item carries beyond names, sizes and dates: its tags and whether it
// is locked. Reads follow symbolic links; an attribute that can't be read
// counts as absent. Thread safe.
class ItemAttributes {
public:
    // The freedesktop tags of the item: the names between the commas of the
    // "user.xdg.tags" extended attribute, blanks around each name trimmed.
    static std::vector<std::string> tagNames(const std::string& path);

    // Locked: the file system's immutable flag is set, or nobody may write to
    // the item. People can set the flag only as root, so a read-only item is
    // what "locked" means to most users here.
    static bool isUserImmutable(const std::string& path);
};

}  // namespace quester
