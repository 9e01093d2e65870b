#include "platform/DesktopEntry.h"

#include <algorithm>
#include <fstream>
#include <map>
#include <optional>

#include "support/PathText.h"

namespace quester {
namespace {

constexpr std::string_view kEntryGroup = "[Desktop Entry]";
// Desktop files are a few kilobytes; a huge file is not one.
constexpr std::size_t kLargestEntry = 1 << 20;

// What an escape of the format stands for: \s \n \t \r, and the character
// itself otherwise (\\, and \; inside a list, which `listItems` has already
// told apart from a separating ";").
char escapedCharacter(char c) {
    switch (c) {
        case 's':
            return ' ';
        case 'n':
            return '\n';
        case 't':
            return '\t';
        case 'r':
            return '\r';
        default:
            return c;
    }
}

std::string unescaped(std::string_view value) {
    std::string text;
    for (std::size_t index = 0; index < value.size(); ++index) {
        bool escapes = value[index] == '\\' && index + 1 < value.size();
        text += escapes ? escapedCharacter(value[++index]) : value[index];
    }
    return text;
}

// A list value: items apart by ";" (not by "\;"), the last ";" optional.
std::vector<std::string> listItems(std::string_view value) {
    std::vector<std::string> items;
    std::size_t start = 0;
    for (std::size_t index = 0; index <= value.size(); ++index) {
        if (index < value.size() && value[index] == '\\') {
            ++index;
            continue;
        }
        if (index < value.size() && value[index] != ';') continue;
        if (index > start) items.push_back(unescaped(value.substr(start, index - start)));
        start = index + 1;
    }
    return items;
}

// The plain (not localised) keys of the entry group, or none without the group.
std::optional<std::map<std::string, std::string, std::less<>>> entryGroupKeys(std::string_view text) {
    std::optional<std::map<std::string, std::string, std::less<>>> keys;
    bool inEntryGroup = false;
    while (!text.empty()) {
        auto end = text.find('\n');
        std::string_view line = trimmedWhitespace(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (line.empty() || line.front() == '#') continue;
        if (line.front() == '[') {
            inEntryGroup = line == kEntryGroup && !keys;
            if (inEntryGroup) keys.emplace();
            continue;
        }
        auto equals = line.find('=');
        if (!inEntryGroup || equals == std::string_view::npos) continue;
        std::string_view key = trimmedWhitespace(line.substr(0, equals));
        if (key.empty() || key.find('[') != std::string_view::npos) continue;
        keys->emplace(std::string(key), std::string(trimmedWhitespace(line.substr(equals + 1))));
    }
    return keys;
}

}  // namespace

bool DesktopEntry::isGame() const {
    return std::find(categories.begin(), categories.end(), "Game") != categories.end();
}

Result<DesktopEntry> DesktopEntry::parse(std::string_view text) {
    auto keys = entryGroupKeys(text);
    if (!keys) return makeError(ErrorCode::corrupt, "no [Desktop Entry] group");
    auto value = [&](std::string_view key) {
        auto found = keys->find(key);
        return found == keys->end() ? std::string() : found->second;
    };
    DesktopEntry entry;
    entry.type = unescaped(value("Type"));
    entry.name = unescaped(value("Name"));
    if (entry.type.empty() || entry.name.empty()) return makeError(ErrorCode::corrupt, "no Type or no Name");
    entry.categories = listItems(value("Categories"));
    entry.noDisplay = value("NoDisplay") == "true";
    entry.hidden = value("Hidden") == "true";
    return entry;
}

Result<DesktopEntry> DesktopEntry::read(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return makeError(ErrorCode::ioError, "cannot read " + path);
    std::string text;
    char chunk[16384];
    while (file.read(chunk, sizeof chunk) || file.gcount() > 0) {
        text.append(chunk, static_cast<std::size_t>(file.gcount()));
        if (text.size() > kLargestEntry)
            return makeError(ErrorCode::corrupt, path + " is too large for a desktop entry");
    }
    if (file.bad()) return makeError(ErrorCode::ioError, "cannot read " + path);
    auto entry = parse(text);
    if (!entry) return makeError(entry.error().code, path + ": " + entry.error().message);
    return entry;
}

}  // namespace quester
