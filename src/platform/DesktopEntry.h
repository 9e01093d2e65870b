#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "support/Result.h"

namespace quester {

// What the desktop's ".desktop" file says of one application: the keys of its
// "[Desktop Entry]" group that tell whether and how it is listed. Localised
// keys ("Name[de]") are left aside: the plain key is the one every entry has.
// A plain value.
struct DesktopEntry {
    std::string type;  // "Application", "Link" or "Directory"
    std::string name;
    std::vector<std::string> categories;
    bool noDisplay = false;  // installed, but kept out of the menus
    bool hidden = false;     // deleted: it also hides entries of the same id in later folders

    // An application a person starts from the menus.
    bool isListedApplication() const { return type == "Application" && !noDisplay && !hidden; }
    bool isGame() const;

    // Fails (`corrupt`) when the text has no "[Desktop Entry]" group or the
    // group lacks Type or Name, the two keys every entry must have.
    static Result<DesktopEntry> parse(std::string_view text);
    // Reads and parses the file (symbolic links followed); `ioError` when it
    // can't be read.
    static Result<DesktopEntry> read(const std::string& path);
};

}  // namespace quester
