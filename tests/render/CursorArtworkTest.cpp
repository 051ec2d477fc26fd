#include "render/CursorArtwork.h"

#include <gtest/gtest.h>

#include "render/ImageLevels.h"

namespace morvelin {
namespace {

TEST(CursorArtwork, EveryStyleHasItsOwnWholePointer) {
    std::vector<Image> images;
    for (const auto& [style, name] : rawValues(std::type_identity<CursorStyle>())) {
        const auto artwork = CursorArtwork::of(style);
        ASSERT_EQ(artwork.has_value(), style != CursorStyle::System) << name;
        if (!artwork) continue;
        const Image image = artwork->image();
        const int width = image.size.width, height = image.size.height;
        ASSERT_GE(height, 330) << name << " is crisp at its largest";
        const auto alpha = [&](int x, int y) { return image.pixels[4 * static_cast<std::size_t>(y * width + x) + 3]; };
        for (int x = 0; x < width; ++x) ASSERT_LE(std::max(alpha(x, 0), alpha(x, height - 1)), 1) << name;
        for (int y = 0; y < height; ++y) ASSERT_LE(std::max(alpha(0, y), alpha(width - 1, y)), 1) << name;

        const int tipX = static_cast<int>(artwork->hotSpot.x * width);
        const int tipY = static_cast<int>(artwork->hotSpot.y * height);
        EXPECT_GT(alpha(tipX, tipY), 180) << name << " has its hot spot in the pointer";
        EXPECT_LT(std::max(tipX, tipY), height / 5) << name << " points up and left";
        EXPECT_EQ(std::ranges::count(images, image), 0) << name << " is another style's";
        images.push_back(image);
    }
}

TEST(ImageLevels, HalvesAsFarAsTheSmallCopyAllows) {
    auto image = std::make_shared<Image>(Image{{24, 40}, std::vector<std::uint8_t>(4U * 24 * 40)});
    for (std::size_t i = 0; i < image->pixels.size(); ++i) image->pixels[i] = static_cast<std::uint8_t>(i / 4 % 24);
    ImageLevels levels;
    struct Case {
        double height;
        PixelSize size;
    };
    for (const Case& c : {Case{30, {24, 40}}, {10, {12, 20}}, {4, {6, 10}}, {1, {3, 5}}, {0.1, {3, 5}}})
        EXPECT_EQ(levels.fit(image, c.height).size, c.size) << c.height;
    EXPECT_EQ(levels.fit(image, 10).pixels[4], 3) << "the mean of columns 2 and 3, rounded up";
    const auto other = std::make_shared<Image>(Image{{2, 2}, std::vector<std::uint8_t>(16, 9)});
    EXPECT_EQ(levels.fit(other, 0.5).pixels, std::vector<std::uint8_t>(4, 9)) << "another image's levels";
}

} // namespace
} // namespace morvelin
