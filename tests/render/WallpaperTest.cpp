// The wallpapers: that each is there, unlike the others, the same every time, and smooth.

#include <cmath>
#include <map>

#include <gtest/gtest.h>

#include "render/BackgroundPresets.h"
#include "render/WallpaperPainting.h"
#include "render/wallpapers/Wallpaper.h"

namespace morvelin {
namespace {

using wallpapers::Light;

std::vector<Light> painted(std::string_view id, PixelSize size) {
    const auto wallpaper = wallpapers::makeWallpaper(id, size);
    const auto width = static_cast<std::size_t>(size.width);
    std::vector<Light> lights(width * static_cast<std::size_t>(size.height));
    for (int y = size.height - 1; wallpaper && y >= 0; --y) // from below: no row may need the one above
        wallpaper->paintRow(y, std::span(lights).subspan(static_cast<std::size_t>(y) * width, width));
    return lights;
}

double difference(const std::vector<Light>& a, const std::vector<Light>& b) {
    double sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        for (float Light::*part : {&Light::red, &Light::green, &Light::blue})
            sum += std::abs(wallpapers::coded(a[i].*part) - wallpapers::coded(b[i].*part));
    return sum / static_cast<double>(3 * a.size());
}

TEST(Wallpapers, AreAllThereAndUnlikeEachOther) {
    std::map<std::string_view, std::vector<Light>> all;
    for (const std::string_view id : BackgroundPresets::wallpaperIDs()) {
        ASSERT_TRUE(wallpapers::makeWallpaper(id, {96, 54})) << id;
        all[id] = painted(id, {96, 54});
        for (const auto& [other, lights] : all)
            if (other != id) { EXPECT_GT(difference(all[id], lights), 0.06) << id << " and " << other; }
    }
    EXPECT_EQ(all.size(), 23U);
    EXPECT_EQ(wallpapers::makeWallpaper("wallpaper-atlantis", {96, 54}), nullptr);
}

TEST(Wallpapers, AreTheSameEveryTimeAtAnySizeAndShape) {
    for (const std::string_view id : BackgroundPresets::wallpaperIDs()) {
        for (const PixelSize size : {PixelSize{16, 16}, {36, 90}, {120, 20}, {2, 2}}) {
            const std::vector<Light> lights = painted(id, size);
            EXPECT_EQ(difference(lights, painted(id, size)), 0) << id;
            for (const Light& light : lights)
                ASSERT_TRUE(std::isfinite(light.red + light.green + light.blue) &&
                            std::min({light.red, light.green, light.blue}) >= 0)
                    << id << " at " << size.width << " × " << size.height;
        }
    }
}

TEST(Wallpapers, LookTheSameLargeAndSmall) {
    for (const std::string_view id : BackgroundPresets::wallpaperIDs()) {
        const std::vector<Light> small = painted(id, {96, 54});
        const std::vector<Light> large = painted(id, {384, 216});
        std::vector<Light> reduced(small.size());
        for (std::size_t i = 0; i < large.size(); ++i) {
            const std::size_t x = i % 384 / 4, y = i / 384 / 4;
            reduced[y * 96 + x] += large[i] * (1 / 16.0F);
        }
        EXPECT_LT(difference(small, reduced), 0.025) << id;
    }
}

TEST(Wallpapers, HaveNoBandsInTheirSkies) {
    struct Sky {
        const char* id;
        double x;      ///< a column of the output
        double bottom; ///< above it nothing but sky shows
    };
    constexpr PixelSize kSize{480, 2160}; // as high as 4K
    for (const Sky& sky : {Sky{"wallpaper-dune-light", 0.6, 0.4},
                           {"wallpaper-golden-gate-light", 0.4, 0.2},
                           {"wallpaper-valley-light", 0.5, 0.25},
                           {"wallpaper-mountains", 0.8, 0.3}}) {
        DeepPlanes planes{DeepPlane(kSize.width, kSize.height), DeepPlane(kSize.width / 2, kSize.height / 2),
                          DeepPlane(kSize.width / 2, kSize.height / 2)};
        paintWallpaper(*wallpapers::makeWallpaper(sky.id, kSize), Subsampling::Quarter, planes);
        for (DeepPlane& plane : planes) {
            const int column = static_cast<int>(sky.x * plane.width());
            const int bottom = static_cast<int>(sky.bottom * plane.height());
            for (int y = 1; y < bottom; ++y)
                // A picture of 8 bits would have steps of a whole level.
                ASSERT_LT(std::abs(plane.row(y)[column] - plane.row(y - 1)[column]), kDeepOne / 2)
                    << sky.id << ' ' << y;
        }
    }
}

} // namespace
} // namespace morvelin
