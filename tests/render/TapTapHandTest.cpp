#include "render/TapTapHand.h"

#include <cmath>

#include <gtest/gtest.h>

#include "render/HandArt.h"
#include "render/OverlayLayer.h"
#include "render/TileShadow.h"

namespace morvelin {
namespace {

TEST(TapTapHand, LiftsAndPressesTwice) {
    const double rebound = 0.5 * std::exp(-1);
    struct Case {
        double p, lift;
    };
    for (const Case& c : {Case{0, 1},
                          {0.05, 1},
                          {0.105, 0.5},
                          {0.16, 0},
                          {0.26, rebound},
                          {0.41, 0.5},
                          {0.46, 1},
                          {0.515, 0.5},
                          {0.57, 0},
                          {0.67, rebound},
                          {0.82, 0.5},
                          {0.87, 1},
                          {1, 1}})
        EXPECT_NEAR(tapTapLift(c.p), c.lift, 1e-9) << c.p;
    for (double p = 0; p < 1; p += 1e-4) ASSERT_NEAR(tapTapLift(p), tapTapLift(p + 1e-4), 0.002) << "no jump at " << p;
}

/// A picture at twice its size, of which the output shows a part.
struct Film {
    CompositionInstruction instruction;
    StageGeometry stage;

    Film(double size, double scale, TapTapStyle style = TapTapStyle::Pointer) {
        instruction.outputSize = {640, 360};
        instruction.tapTapStyle = style;
        instruction.tapTapScale = scale;
        instruction.tapTapKeyframes = {{UUID{}, EditTime(1), EditTime(2), 0.5, 0.25, size, {}}};
        stage.videoRect = {20, 10, 600, 340};
        stage.frameRect = {-100, -50, 1200, 680};
    }
    std::vector<TapTapHand> at(double t) const { return tapTapHandsAt(instruction, stage, EditTime(t)); }
};

TEST(TapTapHand, IsAsLargeAsItsKeyAndTheProjectSay) {
    struct Case {
        double size, scale, height;
    };
    for (const Case& c : {Case{0.12, 1, 81.6}, {0.12, 2, 163.2}, {0.001, 1, 13.6}, {0.8, 3, 612}, {NAN, 1, 0}}) {
        const auto hands = Film(c.size, c.scale).at(1.5);
        ASSERT_EQ(hands.size(), c.height > 0 ? 1U : 0U) << c.size;
        for (const TapTapHand& hand : hands) EXPECT_NEAR(hand.height, c.height, 1e-9) << c.size << " " << c.scale;
    }
    Film tiny(0.02, 1);
    tiny.stage.frameRect.height = 100;
    EXPECT_TRUE(tiny.at(1.5).empty()) << "two pixels are no hand";
}

TEST(TapTapHand, GoesBackAlongItsFingerAsItLifts) {
    struct Case {
        TapTapStyle style;
        double t, x, y, bend, opacity;
    };
    const double rise = 0.12 * 0.1 * 680;
    for (const Case& c : {Case{TapTapStyle::Pointer, 1.025, 500 + 0.57 * rise, 120 + 0.82 * rise, 0, 0.5},
                          {TapTapStyle::Pointer, 1.16, 500, 120, 1, 1},
                          {TapTapStyle::Glove, 1.46, 500, 120 + rise, 0, 1},
                          {TapTapStyle::Glove, 1.925, 500, 120 + rise, 0, 0.5}}) {
        const auto hands = Film(0.1, 1, c.style).at(c.t);
        ASSERT_EQ(hands.size(), 1U) << c.t;
        EXPECT_NEAR(hands[0].tip.x, c.x, 1e-6) << c.t;
        EXPECT_NEAR(hands[0].tip.y, c.y, 1e-6) << c.t;
        EXPECT_NEAR(hands[0].bend, c.bend, 1e-6) << c.t;
        EXPECT_NEAR(hands[0].opacity, c.opacity, 1e-6) << c.t;
    }
    for (const double t : {0.9, 1.0, 2.0}) EXPECT_TRUE(Film(0.1, 1).at(t).empty()) << t;
}

TEST(HandArt, TouchesWhereItPointsAndIsDrawnWhole) {
    constexpr double kHeight = 200;
    constexpr PathPoint kTip{300, 200};
    for (const TapTapStyle style : {TapTapStyle::Pointer, TapTapStyle::Glove}) {
        const Rectangle reach = handReach(style);
        for (const double bend : {0.0, 0.3, 0.7, 1.0}) {
            Canvas canvas({0, 0, 700, 600});
            drawHand(style, kTip, kHeight, bend, canvas);
            const Image image = canvas.image();
            int top = 600, bottom = 0;
            for (int y = 0; y < 600; ++y)
                for (int x = 0; x < 700; ++x) {
                    if (image.pixels[4 * (700 * static_cast<std::size_t>(y) + static_cast<std::size_t>(x)) + 3] == 0)
                        continue;
                    top = std::min(top, y);
                    bottom = std::max(bottom, y + 1);
                    ASSERT_TRUE(x + 1 > kTip.x + reach.x * kHeight && x < kTip.x + reach.right() * kHeight &&
                                y + 1 > kTip.y + reach.y * kHeight && y < kTip.y + reach.bottom() * kHeight)
                        << "beyond its reach at " << x << " " << y << ", bent " << bend;
                }
            EXPECT_EQ(image.pixels[4 * (700 * 200 + 300) + 3], 255) << "the finger is where it touches";
            EXPECT_LT(kTip.y - top, 0.09 * kHeight) << "and no part of it lies far above";
            if (bend == 0) { EXPECT_NEAR(bottom - top, kHeight, 0.01 * kHeight) << "as high as asked for"; }
        }
    }
}

TEST(TapTapHand, EndsWithItsShadowAtTheRoundedPicture) {
    FramePlan plan;
    plan.stage.frameRect = {40, 30, 200, 120};
    plan.stage.cornerRadius = 20;
    plan.hands = {{TapTapStyle::Glove, {225, 120}, 90, 0.5, 1}};
    Picture picture({320, 200}, Subsampling::None);
    for (int p = 0; p < 3; ++p)
        for (int y = 0; y < 200; ++y) std::fill_n(picture.plane(p).row(y), 320, std::uint8_t{90});
    OverlayLayer layer({320, 200}, Subsampling::None);
    std::vector<PixelBox> boxes;
    layer.prepare(plan, boxes);
    layer.draw({0, 0, 320, 200}, picture);

    int inside = 0;
    for (int y = 0; y < 200; ++y)
        for (int x = 0; x < 320; ++x) {
            if (picture.plane(0).row(y)[x] == 90) continue;
            ++inside;
            const double dx = std::max(0.0, x + 0.5 - 220), dy = std::max(0.0, y + 0.5 - 130);
            ASSERT_TRUE(x < 240 && y < 150 && std::hypot(dx, dy) < 21) << x << " " << y;
        }
    EXPECT_GT(inside, 300);
}

TEST(TapTapHand, FadesAsAWholeAndIsTheSameAtTheOutputsEdge) {
    const TapTapHand hand{TapTapStyle::Pointer, {100, 60}, 250, 0.4, 1};
    const Tile whole = drawn(hand, {600, 600});
    TapTapHand faint = hand;
    faint.opacity = 0.25;
    const Tile faded = drawn(faint, {600, 600});
    const Tile cut = drawn(hand, {220, 200});
    ASSERT_EQ(cut.box.right(), 220);
    for (int y = cut.box.y; y < cut.box.bottom(); ++y)
        for (int x = cut.box.x; x < cut.box.right(); ++x) {
            const Tile::Pixel& at = whole.row(y)[x - whole.box.x];
            ASSERT_NEAR(faded.row(y)[x - faded.box.x].alpha, 0.25F * at.alpha, 1e-6F);
            ASSERT_NEAR(cut.row(y)[x - cut.box.x].alpha, at.alpha, 0.006F) << x << " " << y;
            ASSERT_NEAR(cut.row(y)[x - cut.box.x].red, at.red, 0.006F) << x << " " << y;
        }
}

TEST(TileShadow, IsAGaussianOfWhatCastsIt) {
    for (const double sigma : {1.5, 4.0, 13.0}) {
        // The left half casts; the tile is what lies around its edge.
        const PixelBox around{0, 0, 400, 240};
        Image caster{{400, 240}, std::vector<std::uint8_t>(4U * 400 * 240)};
        for (std::size_t i = 0; i < caster.pixels.size() / 4; ++i) caster.pixels[4 * i + 3] = i % 400 < 200 ? 255 : 0;
        Tile tile({140, 110, 120, 20});
        layShadow({{3.25, 0}, sigma, 0.5}, caster, around, tile);
        for (int x = 140; x < 260; ++x) {
            const double share = 0.5 * std::erfc((x + 0.5 - 203.25) / sigma / std::sqrt(2));
            ASSERT_NEAR(tile.row(115)[x - 140].alpha, 0.5 * share, 0.006) << x << ", sigma " << sigma;
        }
    }
}

} // namespace
} // namespace morvelin
