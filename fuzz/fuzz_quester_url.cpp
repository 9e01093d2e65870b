// Any bytes as a "quester:" URL handed to the program by the desktop. Text of
// another scheme is never taken for one.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "results/QuesterURL.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto url = quester::QuesterURL::parse(text);
    if (url && (text.size() < 8 || text[7] != ':')) std::abort();
    return 0;
}
