// Image files as backgrounds take them: whole, upright, and no larger than needed.

#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "base/TemporaryFolder.h"
#include "core/base/Files.h"
#include "media/ImageDecoding.h"
#include "media/PNG.h"

namespace morvelin {
namespace {

/// Black to the left and white to the right, 16 × 8, held a quarter to the left: it was taken on the side.
constexpr std::string_view kTurnedJPEG =
    "ffd8ffe1002245786966000049492a0008000000010012010300010000000600000000000000ffdb004300080a0a0b0a0b0d0d0d0d0d0d100f"
    "10"
    "1010101010101010101012121215151512121210101212141415151717171515151517171919191e1e1c1c2323242b2b33ffc4004b00010100"
    "00"
    "000000000000000000000000000801010000000000000000000000000000000010010000000000000000000000000000000011010000000000"
    "0000"
    "000000000000000000ffc00011080008001003011200021200031200ffda000c03010002110311003f009fc005fe003fffd9";

std::string bytesOf(std::string_view hex) {
    std::string bytes;
    for (std::size_t i = 0; i < hex.size(); i += 2)
        bytes += static_cast<char>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16));
    return bytes;
}

/// A bitmap's head that promises that many pixels, and nothing behind it.
std::string bitmapOf(std::uint32_t width, std::uint32_t height) {
    std::string bytes = "BM";
    const auto number = [&](std::uint32_t value) {
        for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(value >> shift);
    };
    for (const std::uint32_t value : {0U, 0U, 54U, 40U, width, height, 0x180001U, 0U, 0U, 0U, 0U, 0U, 0U})
        number(value);
    return bytes;
}

class ImageDecoding : public testing::Test {
protected:
    std::filesystem::path file(std::string_view content) {
        const auto path = m_folder.path() / ("image " + std::to_string(++m_count));
        EXPECT_TRUE(writeFileAtomically(path, content));
        return path;
    }
    static std::string png(const Image& image) {
        const auto bytes = encodePNG(image);
        return bytes ? std::string(bytes->begin(), bytes->end()) : std::string();
    }

private:
    TemporaryFolder m_folder;
    int m_count = 0;
};

TEST_F(ImageDecoding, KeepsThePixelsOfASmallImage) {
    const Image image{{2, 1}, {10, 200, 90, 255, 0, 40, 20, 64}}; // the second lets light through
    const auto decoded = decodeImage(file(png(image)), {640, 360});
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->image, image);
    EXPECT_STREQ(decoded->extension, ".png");
}

TEST_F(ImageDecoding, ReducesALargeImageUntilItJustCovers) {
    Image image{{1200, 301}, std::vector<std::uint8_t>(4 * 1200 * 301, 255)};
    for (std::size_t i = 0; i < image.pixels.size(); ++i)
        if (i % 4 != 3) image.pixels[i] = i / 4 % 2 == 0 ? 0 : 255; // stripes far finer than what is left
    const auto decoded = decodeImage(file(png(image)), {160, 100});
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->size, (PixelSize{1200, 301}));
    EXPECT_EQ(decoded->image.size, (PixelSize{399, 100}));
    for (std::size_t x = 8; x < 390; ++x) ASSERT_NEAR(decoded->image.pixels[4 * (399 * 50 + x)], 127, 4) << x;
}

TEST_F(ImageDecoding, TurnsAPhotoUpright) {
    const auto decoded = decodeImage(file(bytesOf(kTurnedJPEG)), {640, 640});
    ASSERT_TRUE(decoded);
    ASSERT_EQ(decoded->image.size, (PixelSize{8, 16}));
    EXPECT_LT(decoded->image.pixels[4 * 8 * 2], 30) << "its left side is the top";
    EXPECT_GT(decoded->image.pixels[4 * 8 * 13], 225);
}

TEST_F(ImageDecoding, RefusesWhatIsNoWholeImage) {
    const std::string whole = png({{64, 64}, std::vector<std::uint8_t>(4 * 64 * 64, 255)});
    ASSERT_TRUE(decodeImage(file(whole), {8, 8}));
    const std::string photo = bytesOf(kTurnedJPEG);
    for (const std::string& content :
         {std::string(), std::string("Not an image."), whole.substr(0, whole.size() / 2),
          photo.substr(0, photo.size() - 12), bitmapOf(40000, 40000), bitmapOf(100, 40000)})
        EXPECT_FALSE(decodeImage(file(content), {8, 8})) << content.substr(0, 8) << ", " << content.size();
    EXPECT_FALSE(decodeImage("/nowhere/image.png", {8, 8}));
}

} // namespace
} // namespace morvelin
