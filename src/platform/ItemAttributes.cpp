#include "platform/ItemAttributes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <cerrno>

#include "support/PathText.h"

namespace quester {

namespace {

constexpr const char* kTagsAttribute = "user.xdg.tags";

}  // namespace

std::vector<std::string> ItemAttributes::tagNames(const std::string& path) {
    // The value may change between the two calls; a second size check keeps a
    // grown value from being cut.
    for (int attempt = 0; attempt < 3; ++attempt) {
        const ssize_t length = getxattr(path.c_str(), kTagsAttribute, nullptr, 0);
        if (length <= 0) return {};
        std::string value(static_cast<std::size_t>(length), '\0');
        const ssize_t read = getxattr(path.c_str(), kTagsAttribute, value.data(), value.size());
        if (read < 0 && errno == ERANGE) continue;
        if (read <= 0) return {};
        value.resize(static_cast<std::size_t>(read));
        std::vector<std::string> names;
        for (const auto& part : splitNonEmpty(value, ',')) {
            if (auto name = trimmedWhitespace(part); !name.empty()) names.emplace_back(name);
        }
        return names;
    }
    return {};
}

bool ItemAttributes::isUserImmutable(const std::string& path) {
    struct statx info {};
    if (statx(AT_FDCWD, path.c_str(), 0, STATX_MODE, &info) != 0) return false;
    const bool immutable =
        (info.stx_attributes_mask & STATX_ATTR_IMMUTABLE) && (info.stx_attributes & STATX_ATTR_IMMUTABLE);
    const bool writableBySomeone = info.stx_mode & (S_IWUSR | S_IWGRP | S_IWOTH);
    return immutable || !writableBySomeone;
}

}  // namespace quester
