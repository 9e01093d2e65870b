#include "import/VisionTextCollector.h"

#include <gtest/gtest.h>
#include <leptonica/allheaders.h>

#include <cstdlib>
#include <string>

namespace quester {
namespace {

// A white one-bit PNG: a picture of many pixels in a few kilobytes, as a file
// made to exhaust a reader's memory would be.
std::string whitePng(int width, int height) {
    Pix* pix = pixCreate(width, height, 1);
    l_uint8* data = nullptr;
    std::size_t size = 0;
    if (pix == nullptr || pixWriteMemPng(&data, &size, pix, 0.0f) != 0) std::abort();
    std::string bytes(reinterpret_cast<const char*>(data), size);
    lept_free(data);
    pixDestroy(&pix);
    return bytes;
}

TEST(VisionTextCollectorTest, PictureOfTooManyPixelsIsRefusedBeforeDecoding) {
    auto fits = VisionTextCollector::Image::read(whitePng(7000, 7000));
    ASSERT_TRUE(fits);
    EXPECT_EQ(fits->width(), 7000);
    EXPECT_EQ(fits->height(), 7000);

    EXPECT_FALSE(VisionTextCollector::Image::read(whitePng(8000, 8000)));
    EXPECT_FALSE(VisionTextCollector::Image::read(whitePng(40000, 10)));
}

TEST(VisionTextCollectorTest, BytesThatAreNoPictureGiveNoImage) {
    std::string png = whitePng(50, 50);
    EXPECT_FALSE(VisionTextCollector::Image::read(""));
    EXPECT_FALSE(VisionTextCollector::Image::read("GIF89a not really"));
    EXPECT_FALSE(VisionTextCollector::Image::read(png.substr(0, png.size() / 2)));
}

}  // namespace
}  // namespace quester
