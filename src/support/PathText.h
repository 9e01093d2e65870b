#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quester {

// Text operations on absolute UTF-8 paths. They never touch the file system.

// `path` equals `folder` or lies below it, by whole components ("/usr" holds
// "/usr/x", not "/users"). A trailing "/" on `folder` is ignored.
bool isSameOrBelow(std::string_view path, std::string_view folder);
// `path` lies below `folder`, not equal to it.
bool isStrictlyBelow(std::string_view path, std::string_view folder);

// `path` without the "/" at its end; "/" itself stays.
std::string_view withoutTrailingSlash(std::string_view path);
// `text` without the blanks, tabs and line ends at either end.
std::string_view trimmedWhitespace(std::string_view text);
// The pieces of `text` between `separator`s, empty pieces dropped.
std::vector<std::string> splitNonEmpty(std::string_view text, char separator);
// The components between the "/", empty pieces dropped.
inline std::vector<std::string> pathComponents(std::string_view path) {
    return splitNonEmpty(path, '/');
}
// How many components `pathComponents` would give, without making them.
std::size_t pathComponentCount(std::string_view path);
// The last component; "/" for the root, empty for empty text. Trailing "/" ignored.
std::string lastPathComponent(std::string_view path);
// The same as a view into `path`, for loops that must not allocate.
std::string_view lastPathComponentView(std::string_view path);
// The text after the last "." of the last component, when the dot is neither
// its first nor its last character; else empty.
std::string pathExtension(std::string_view path);
// The path without its last component: "/a/b" gives "/a", "/a" gives "/", "/" gives "".
std::string parentPath(std::string_view path);
// `folder` + "/" + `name`, without doubling the "/".
std::string joinPath(std::string_view folder, std::string_view name);

}  // namespace quester
