#include "render/ExportSettings.h"

#include <gtest/gtest.h>

namespace morvelin {
namespace {

using enum VideoQuality;

TEST(ExportSettings, LabelsForThePicker) {
    struct Case {
        VideoQuality quality;
        const char* mp4;
        const char* gif;
    };
    for (const Case& c : {Case{VeryLow, "720p · 24 fps", "480px · 10 fps"},
                          {Low, "720p · 30 fps", "640px · 12 fps"},
                          {Medium, "720p · 60 fps", "800px · 15 fps"},
                          {High, "1080p · 60 fps", "960px · 20 fps"},
                          {Ultra, "1440p · 60 fps", "1000px · 24 fps"}}) {
        EXPECT_EQ(qualityLabel(c.quality, ExportFormat::MP4), c.mp4);
        EXPECT_EQ(qualityLabel(c.quality, ExportFormat::GIF), c.gif);
    }
}

TEST(ExportSettings, SizesAreEvenAndKeepTheAspect) {
    struct Case {
        PixelSize canvas;
        VideoQuality quality;
        PixelSize mp4;
        PixelSize gif;
    };
    for (const Case& c : {Case{{1920, 1080}, High, {1920, 1080}, {960, 540}},
                          {{1921, 1081}, High, {1920, 1080}, {960, 540}}, // 1919.2 wide, 959.6 halves
                          {{1920, 1080}, VeryLow, {1280, 720}, {480, 270}},
                          {{5120, 2880}, Ultra, {2560, 1440}, {1000, 562}}, // 562.5 is nearer to 562
                          {{1080, 1920}, High, {608, 1080}, {608, 1080}},   // a portrait by the same rule
                          {{640, 361}, Ultra, {640, 362}, {640, 362}},      // 180.5 rounds away from zero
                          {{1, 1}, High, {2, 2}, {2, 2}},
                          {{1, 1000}, Low, {2, 720}, {2, 720}},
                          {{0, 1080}, High, {2, 2}, {2, 2}},
                          {{1920, -1}, High, {2, 2}, {2, 2}}}) {
        EXPECT_EQ(mp4OutputSize(c.canvas, c.quality), c.mp4) << c.canvas.width << " × " << c.canvas.height;
        EXPECT_EQ(gifOutputSize(c.canvas, c.quality), c.gif) << c.canvas.width << " × " << c.canvas.height;
    }
}

TEST(ExportSettings, RatesOfAnMP4) {
    struct Case {
        PixelSize canvas;
        double nominal;
        VideoQuality quality;
        double frameRate;
        std::int64_t bitRate;
    };
    for (const Case& c : {Case{{1920, 1080}, 60, High, 60, 6'469'632},
                          {{1920, 1080}, 29.97, High, 29.97, 3'231'581}, // 3231581.184, truncated
                          {{1920, 1080}, 60, VeryLow, 24, 398'131},
                          {{1920, 1080}, 60, Medium, 60, 1'935'360},
                          {{1920, 1080}, 0, Low, 30, 691'200},
                          {{64, 64}, 30, Ultra, 30, 300'000},
                          {{30'000, 1440}, 60, Ultra, 60, 80'000'000}}) {
        const VideoSettings settings = mp4Settings(c.canvas, c.nominal, c.quality);
        EXPECT_EQ(settings.frameRate, c.frameRate);
        EXPECT_EQ(settings.bitRate, c.bitRate);
    }
}

TEST(ExportSettings, ForAIIgnoresTheQuality) {
    struct Case {
        PixelSize canvas;
        double nominal;
        VideoSettings settings;
    };
    for (const Case& c : {Case{{5120, 2880}, 60, {{1536, 864}, 5, 796'262}},
                          {{1080, 1920}, 60, {{864, 1536}, 5, 796'262}},
                          {{801, 600}, 2.6, {{802, 600}, 3, 700'000}}, // 400.5 rounds away from zero
                          {{1536, 1536}, 0.2, {{1536, 1536}, 1, 700'000}},
                          {{1536, 1536}, 0, {{1536, 1536}, 5, 1'415'577}},
                          {{0, 0}, 30, {{2, 2}, 5, 700'000}}})
        EXPECT_EQ(forAISettings(c.canvas, c.nominal), c.settings) << c.canvas.width << " × " << c.canvas.height;
}

TEST(ExportSettings, AGIFHasWholeFramesAndAtLeastOne) {
    struct Case {
        double duration;
        double frameRate;
        std::int64_t frames;
    };
    for (const Case& c :
         {Case{0, 20, 1}, {-1, 20, 1}, {0.01, 10, 1}, {1.99, 10, 19}, {1.15, 20, 23}, {3600, 24, 86'400}})
        EXPECT_EQ(gifFrameCount(Seconds(c.duration), c.frameRate), c.frames) << c.duration;
    EXPECT_EQ(gifSettings({1920, 1080}, Medium), (VideoSettings{{800, 450}, 15, 0}));
}

TEST(ExportSettings, QualitiesByTheirWords) {
    for (const auto& [word, quality] :
         {std::pair{"very_low", VeryLow}, {"verylow", VeryLow}, {"lowest", VeryLow}, {"ultra", Ultra}})
        EXPECT_EQ(videoQualityNamed(word), quality);
    for (const char* word : {"", "High", "best"}) EXPECT_EQ(videoQualityNamed(word), std::nullopt) << word;
}

} // namespace
} // namespace morvelin
