// PNG files, differences between pictures, and the map of unchanged blocks.

#include <random>

#include <gtest/gtest.h>

#include "media/PNG.h"
#include "media/PictureDifference.h"
#include "media/TestPictures.h"
#include "media/UnchangedBlocks.h"

namespace morvelin {
namespace {

TEST(PNG, KeepsColourAndAlpha) {
    Image image{{5, 3}, {}};
    for (int index = 0; index < 15; ++index) {
        const auto alpha = static_cast<std::uint8_t>(index * 17 + 17);
        for (const int part : {4, 2, 1})
            image.pixels.push_back(static_cast<std::uint8_t>(alpha / part)); // premultiplied
        image.pixels.push_back(alpha);
    }
    const auto bytes = encodePNG(image);
    ASSERT_TRUE(bytes);
    const auto read = decodePNG(*bytes);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->size, image.size);
    for (std::size_t index = 0; index < image.pixels.size(); ++index)
        EXPECT_NEAR(read->pixels[index], image.pixels[index], index % 4 == 3 ? 0 : 1) << index;
}

TEST(PNG, HoldsStraightAlphaInTheFile) {
    // Half-transparent pure red reads as red once its alpha is made whole.
    const auto bytes = encodePNG({{1, 1}, {0, 0, 128, 128}});
    ASSERT_TRUE(bytes);
    const auto read = decodePNG(*bytes);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->pixels, (std::vector<std::uint8_t>{0, 0, 128, 128}));
    EXPECT_EQ(encodePNG({{1, 1}, {0, 0, 0, 0}}).has_value(), true);
}

TEST(PNG, BrokenBytesAreAnError) {
    const auto bytes = encodePNG({{40, 40}, std::vector<std::uint8_t>(40 * 40 * 4, 200)});
    ASSERT_TRUE(bytes);
    constexpr std::size_t kEndMark = 12; // without it all pixels are still there
    for (std::size_t size = 0; size < bytes->size() - kEndMark; ++size)
        EXPECT_FALSE(decodePNG(std::span(*bytes).first(size))) << size;
    std::vector<std::uint8_t> huge = *bytes;
    huge[16] = 0x7F; // the width's first byte; its checksum is wrong as well
    EXPECT_FALSE(decodePNG(huge));
    EXPECT_FALSE(encodePNG({}));
}

TEST(PictureDifference, FindsEveryTileThatDiffersAndNoOther) {
    const PixelSize size{330, 90}; // the last tiles are partial
    for (const Subsampling subsampling : {Subsampling::Quarter, Subsampling::None}) {
        Picture a = detailedPicture(size, subsampling);
        EXPECT_TRUE(differingBoxes(a, a).empty());
        std::mt19937 random(5);
        for (int round = 0; round < 100; ++round) {
            Picture b = detailedPicture(size, subsampling);
            std::vector<PixelBox> touched;
            for (auto count = random() % 6; count > 0; --count) {
                const int index = static_cast<int>(random() % 3);
                const auto plane = b.plane(index);
                const int x = static_cast<int>(random()) & 0xFFFF;
                const int y = static_cast<int>(random()) & 0xFFFF;
                plane.row(y % plane.height)[x % plane.width] ^= 1;
                const int divisor = size.width / plane.width;
                touched.push_back({x % plane.width * divisor / 64 * 64, y % plane.height * divisor / 16 * 16, 64, 16});
            }
            const std::vector<PixelBox> boxes = differingBoxes(a, b);
            for (int y = 0; y < size.height; y += 16)
                for (int x = 0; x < size.width; x += 64) {
                    const PixelBox tile{x, y, 64, 16};
                    const bool isTold = std::ranges::any_of(
                        boxes, [&](const PixelBox& box) { return !box.intersected(tile).isEmpty(); });
                    // A sample that was flipped twice is what it was.
                    const auto flips = std::ranges::count(touched, tile);
                    if (flips > 1) continue;
                    EXPECT_EQ(isTold, flips == 1);
                }
        }
    }
}

TEST(PictureDifference, JoinsNeighbours) {
    const Picture a = detailedPicture({640, 160});
    Picture b = detailedPicture({640, 160});
    fill(b, {70, 20, 200, 60}, {235, 128, 128});
    EXPECT_EQ(differingBoxes(a, b), (std::vector<PixelBox>{{64, 16, 256, 64}}));
}

TEST(UnchangedBlocks, AreThoseThatNoBoxTouches) {
    struct Case {
        std::vector<PixelBox> changed;
        int unchanged;
    };
    const PixelSize size{50, 40}; // 4 × 3 blocks, the last ones partial
    for (const Case& c : {Case{{}, 12},
                          {{{0, 0, 50, 40}}, 0},
                          {{{15, 15, 1, 1}}, 11},
                          {{{15, 15, 2, 2}}, 8},
                          {{{48, 32, 2, 8}}, 11},
                          {{{-9, -9, 10, 10}}, 11},
                          {{{60, 0, 9, 9}}, 12},
                          {{{16, 0, 16, 40}, {20, 3, 1, 1}}, 9}}) {
        std::vector<std::uint8_t> blocks(12, 7);
        EXPECT_EQ(markUnchangedBlocks(blocks, size, c.changed, 1), c.unchanged);
        EXPECT_EQ(std::ranges::count(blocks, 1), c.unchanged);
    }
}

} // namespace
} // namespace morvelin
