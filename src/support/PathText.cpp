#include "support/PathText.h"

namespace quester {

std::string_view withoutTrailingSlash(std::string_view path) {
    while (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
    return path;
}

bool isSameOrBelow(std::string_view path, std::string_view folder) {
    folder = withoutTrailingSlash(folder);
    path = withoutTrailingSlash(path);
    if (folder.empty()) return false;
    if (folder == "/") return !path.empty() && path.front() == '/';
    if (path.substr(0, folder.size()) != folder) return false;
    return path.size() == folder.size() || path[folder.size()] == '/';
}

bool isStrictlyBelow(std::string_view path, std::string_view folder) {
    return isSameOrBelow(path, folder) && withoutTrailingSlash(path) != withoutTrailingSlash(folder);
}

std::string_view trimmedWhitespace(std::string_view text) {
    constexpr std::string_view whitespace = " \t\r\n";
    const auto first = text.find_first_not_of(whitespace);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(whitespace) - first + 1);
}

std::vector<std::string> splitNonEmpty(std::string_view text, char separator) {
    std::vector<std::string> pieces;
    for (std::size_t start = 0; start < text.size();) {
        auto end = text.find(separator, start);
        if (end == std::string_view::npos) end = text.size();
        if (end > start) pieces.emplace_back(text.substr(start, end - start));
        start = end + 1;
    }
    return pieces;
}

std::size_t pathComponentCount(std::string_view path) {
    std::size_t count = 0;
    for (std::size_t index = 0; index < path.size(); ++index) {
        if (path[index] != '/' && (index == 0 || path[index - 1] == '/')) ++count;
    }
    return count;
}

std::string_view lastPathComponentView(std::string_view path) {
    path = withoutTrailingSlash(path);
    if (path == "/") return path;
    auto slash = path.rfind('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

std::string lastPathComponent(std::string_view path) {
    return std::string(lastPathComponentView(path));
}

std::string pathExtension(std::string_view path) {
    std::string name = lastPathComponent(path);
    auto dot = name.rfind('.');
    if (dot == std::string::npos || dot == 0 || dot + 1 == name.size()) return {};
    return name.substr(dot + 1);
}

std::string parentPath(std::string_view path) {
    path = withoutTrailingSlash(path);
    if (path == "/" || path.empty()) return {};
    auto slash = path.rfind('/');
    if (slash == std::string_view::npos) return {};
    return slash == 0 ? std::string("/") : std::string(path.substr(0, slash));
}

std::string joinPath(std::string_view folder, std::string_view name) {
    std::string joined(withoutTrailingSlash(folder));
    while (!name.empty() && name.front() == '/') name.remove_prefix(1);
    if (name.empty()) return joined;
    if (joined.empty() || joined.back() != '/') joined += '/';
    joined += name;
    return joined;
}

}  // namespace quester
