// Any bytes as a picture, through the decoding that comes before recognition
// (recognition itself takes seconds a picture, too slow to fuzz): unreadable
// or oversized pictures must give none, never a crash or a huge allocation.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "import/VisionTextCollector.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using Image = quester::VisionTextCollector::Image;
    auto image = Image::read(std::string_view(reinterpret_cast<const char*>(data), size));
    if (image && static_cast<long long>(image->width()) * image->height() > Image::maxPixels) std::abort();
    return 0;
}
