// The screen's colours in the codec's planes, and back through a real movie.

#include "media/ColorConversion.h"

#include <random>

#include <gtest/gtest.h>

#include "base/TemporaryFolder.h"
#include "media/FFmpegMovieReader.h"
#include "media/FFmpegMovieWriter.h"
#include "media/TestPictures.h"

namespace morvelin {
namespace {

/// A screen of its own pixels.
struct Screen {
    explicit Screen(PixelSize screenSize) : size(screenSize) {
        bytes.resize(static_cast<std::size_t>(4 * size.width * size.height));
    }
    [[nodiscard]] ScreenPixels pixels() const { return {bytes.data(), 4 * size.width, size}; }
    [[nodiscard]] std::uint8_t* at(int x, int y) { return bytes.data() + 4 * (y * size.width + x); }

    PixelSize size;
    std::vector<std::uint8_t> bytes;
};

Screen randomScreen(PixelSize size, unsigned seed) {
    Screen screen(size);
    std::mt19937 random(seed);
    for (std::uint8_t& byte : screen.bytes) byte = static_cast<std::uint8_t>(random());
    return screen;
}

/// Luma, Cb and Cr of BT.709 in limited range by the standard's own formula.
std::array<double, 3> reference(double b, double g, double r) {
    const double luma = 0.2126 * r + 0.7152 * g + 0.0722 * b;
    return {16 + luma * 219 / 255, 128 + (b - luma) / 1.8556 * 224 / 255, 128 + (r - luma) / 1.5748 * 224 / 255};
}

TEST(ColorConversion, RoundsTheStandardsFormulaToNearest) {
    // 70 columns: whole vectors and a rest.
    const PixelSize size{70, 6};
    Screen screen = randomScreen(size, 1);
    Picture picture(size, Subsampling::Quarter);
    convertToPicture(screen.pixels(), whole(picture), picture);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const std::uint8_t* pixel = screen.at(x, y);
            EXPECT_NEAR(picture.plane(0).row(y)[x], reference(pixel[0], pixel[1], pixel[2])[0], 0.52);
            if (x % 2 != 0 || y % 2 != 0) continue;
            std::array<double, 3> mean{};
            for (std::size_t channel = 0; channel < 3; ++channel)
                for (const int row : {y, y + 1})
                    mean[channel] += (screen.at(std::max(x - 1, 0), row)[channel] + 2 * screen.at(x, row)[channel] +
                                      screen.at(x + 1, row)[channel]) /
                                     8.0;
            const std::array<double, 3> expected = reference(mean[0], mean[1], mean[2]);
            EXPECT_NEAR(picture.plane(1).row(y / 2)[x / 2], expected[1], 0.52) << x;
            EXPECT_NEAR(picture.plane(2).row(y / 2)[x / 2], expected[2], 0.52) << x;
        }
}

TEST(ColorConversion, ConvertingWhatChangedGivesWhatConvertingAllGives) {
    const PixelSize size{130, 40};
    Screen screen = randomScreen(size, 2);
    Picture picture(size, Subsampling::Quarter);
    convertToPicture(screen.pixels(), whole(picture), picture);
    std::mt19937 random(3);
    for (int round = 0; round < 300; ++round) {
        const int x = static_cast<int>(random() % 128);
        const int y = static_cast<int>(random() % 38);
        const PixelBox box{x, y, 1 + static_cast<int>(random() % 60), 1 + static_cast<int>(random() % 9)};
        for (int row = box.y; row < std::min(box.bottom(), size.height); ++row)
            for (int column = box.x; column < std::min(box.right(), size.width); ++column)
                for (int channel = 0; channel < 3; ++channel)
                    screen.at(column, row)[channel] = static_cast<std::uint8_t>(random());
        Picture before(size, Subsampling::Quarter);
        Picture all(size, Subsampling::Quarter);
        for (int plane = 0; plane < 3; ++plane)
            for (int row = 0; row < picture.plane(plane).height; ++row)
                std::copy_n(picture.plane(plane).row(row), picture.plane(plane).width, before.plane(plane).row(row));

        const PixelBox told = convertToPicture(screen.pixels(), box, picture);
        convertToPicture(screen.pixels(), whole(all), all);
        ASSERT_TRUE(areEqual(picture, all)) << box.x << "," << box.y << " " << box.width << "×" << box.height;
        for (int plane = 0; plane < 3; ++plane) { // nothing outside the box that it told of
            const int divisor = plane == 0 ? 1 : 2;
            for (int row = 0; row < all.plane(plane).height; ++row)
                for (int column = 0; column < all.plane(plane).width; ++column) {
                    const PixelBox sample{column * divisor, row * divisor, 1, 1};
                    if (!told.intersected(sample).isEmpty()) continue;
                    ASSERT_EQ(picture.plane(plane).row(row)[column], before.plane(plane).row(row)[column]);
                }
        }
    }
    EXPECT_TRUE(convertToPicture(screen.pixels(), {500, 10, 20, 20}, picture).isEmpty());
}

TEST(ColorConversion, ColoursSurviveAMovie) {
    const std::array<std::array<int, 3>, 9> colours{{{255, 0, 0},
                                                     {0, 255, 0},
                                                     {0, 0, 255},
                                                     {0, 0, 0},
                                                     {255, 255, 255},
                                                     {128, 128, 128},
                                                     {255, 255, 0},
                                                     {30, 60, 200},
                                                     {250, 120, 10}}};
    const PixelSize size{64 * 9, 64};
    Screen screen(size);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            for (int channel = 0; channel < 3; ++channel)
                screen.at(x, y)[channel] = static_cast<std::uint8_t>(
                    colours[static_cast<std::size_t>(x / 64)][static_cast<std::size_t>(2 - channel)]);
    Picture picture(size, Subsampling::Quarter);
    convertToPicture(screen.pixels(), whole(picture), picture);

    const TemporaryFolder folder;
    const auto path = folder.path() / "colours.mov";
    auto writer = FFmpegMovieWriterFactory().create({.path = path,
                                                     .container = MovieSettings::Container::FragmentedQuickTime,
                                                     .pace = MovieSettings::Pace::RealTime,
                                                     .transfer = MovieSettings::Transfer::SRGB,
                                                     .size = size,
                                                     .bitRate = 12'000'000});
    ASSERT_TRUE(writer);
    ASSERT_TRUE((*writer)->append(picture, 0_s, std::array{whole(picture)}));
    ASSERT_TRUE((*writer)->finish(1_s));
    auto reader = FFmpegMovieReaderFactory().open(path);
    ASSERT_TRUE(reader);
    const Image image = imageOf(*(*reader)->frameAt(SourceTime(0))->picture);
    for (int index = 0; index < 9; ++index)
        for (int channel = 0; channel < 3; ++channel)
            EXPECT_NEAR(image.pixels[static_cast<std::size_t>(4 * (32 * size.width + 64 * index + 32) + 2 - channel)],
                        colours[static_cast<std::size_t>(index)][static_cast<std::size_t>(channel)], 2)
                << index;
}

} // namespace
} // namespace morvelin
