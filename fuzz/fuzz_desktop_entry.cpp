// Any bytes as the text of a ".desktop" file. An entry the parser accepts has
// the two keys every entry must have.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "platform/DesktopEntry.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto entry = quester::DesktopEntry::parse(text);
    if (!entry) return 0;
    if (entry->type.empty() || entry->name.empty()) std::abort();
    (void)entry->isListedApplication();
    (void)entry->isGame();
    return 0;
}
