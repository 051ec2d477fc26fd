// Where the picture lies on the output, and where the camera may go.

#include <gtest/gtest.h>

#include "CompositorScenes.h"
#include "render/RoundedCoverage.h"
#include "render/StageGeometry.h"
#include "render/StageLayer.h"
#include "render/StageShadow.h"

namespace morvelin {
namespace {

using namespace test;

void expectRect(const Rectangle& rect, double x, double y, double width, double height, const char* what) {
    EXPECT_NEAR(rect.x, x, 0.01) << what;
    EXPECT_NEAR(rect.y, y, 0.01) << what;
    EXPECT_NEAR(rect.width, width, 0.01) << what;
    EXPECT_NEAR(rect.height, height, 0.01) << what;
}

TEST(StageGeometry, ThePictureIsTheLargestOfItsAspectInsideThePadding) {
    constexpr PixelSize kFullHD{1920, 1080};
    expectRect(videoRectangle(kFullHD, kFullHD, 0), 0, 0, 1920, 1080, "fills the output");
    expectRect(videoRectangle(kFullHD, kFullHD, 0.05), 96, 54, 1728, 972, "limited by the height");
    expectRect(videoRectangle({1000, 1000}, kFullHD, 0), 420, 0, 1080, 1080, "limited by the height");
    expectRect(videoRectangle({2000, 500}, kFullHD, 0.1), 108, 327, 1704, 426, "limited by the width");
    expectRect(videoRectangle({0, 1080}, kFullHD, 0), 0, 0, 1920, 1080, "no area takes the output's aspect");
    expectRect(videoRectangle(kFullHD, kFullHD, -3), 0, 0, 1920, 1080, "no negative padding");
    expectRect(videoRectangle(kFullHD, kFullHD, 0.6), 959.11, 539.5, 1.78, 1, "an area of one pixel's height stays");
}

StageGeometry stageAt(double zoom, double x, double y, double padding = 0.05, double cornerRadius = 0.01) {
    auto instruction = plainInstruction({1920, 1080}, {1920, 1080});
    instruction->padding = padding;
    instruction->cornerRadius = cornerRadius;
    instruction->shadowIntensity = 0.5;
    return stageGeometry(*instruction, {EditTime(0), zoom, x, y});
}

TEST(StageGeometry, TheCameraMagnifiesAroundItsCentreAndStopsAtTheStagesEdge) {
    expectRect(stageAt(1, 0.1, 0.9).frameRect, 96, 54, 1728, 972, "zoom 1 shows the whole stage, wherever it aims");
    expectRect(stageAt(0.4, 0.1, 0.9).frameRect, 96, 54, 1728, 972, "a zoom below 1 is 1");
    expectRect(stageAt(2, 0.5, 0.5).frameRect, -768, -432, 3456, 1944, "into the middle");
    expectRect(stageAt(2, 0.25, 0.5).frameRect, 960 - 864, -432, 3456, 1944, "a quarter of the picture in the middle");
    expectRect(stageAt(2, 0, 0).frameRect, 192, 108, 3456, 1944, "the view ends with the stage, padding included");
    expectRect(stageAt(2, 1, 1).frameRect, -1728, -972, 3456, 1944, "at the far corner too");

    const StageGeometry stage = stageAt(1.75, 0.3, 0.6);
    const NormalizedPoint point = stage.outputPoint(0.3, 0.6);
    EXPECT_NEAR(point.x, 960, 0.01) << "what the camera aims at is in the middle";
    EXPECT_NEAR(point.y, 540, 0.01);
    const Rectangle rect = stage.outputRectangle({0.3, 0.6, 0.1, 0.2});
    EXPECT_NEAR(rect.width, 0.1 * 1728 * 1.75, 0.01);
    EXPECT_NEAR(rect.height, 0.2 * 972 * 1.75, 0.01);
}

TEST(StageGeometry, CornersAreLimitedAndGrowWithTheZoom) {
    EXPECT_NEAR(stageAt(1, 0.5, 0.5, 0.05, 0.01).cornerRadius, 9.72, 1e-6);
    EXPECT_NEAR(stageAt(2, 0.5, 0.5, 0.05, 0.01).cornerRadius, 19.44, 1e-6);
    EXPECT_NEAR(stageAt(1, 0.5, 0.5, 0.05, 0.5).cornerRadius, 0.04 * 972, 1e-6);
    EXPECT_EQ(stageAt(1, 0.5, 0.5, 0.05, -1).cornerRadius, 0);
}

TEST(StageGeometry, ACameraAtRestGivesEqualStages) {
    for (const double drift : {1e-13, -1e-13, 3e-12})
        EXPECT_EQ(stageAt(1.75 + drift, 0.31 + drift, 0.62 - drift), stageAt(1.75, 0.31, 0.62));
    EXPECT_NE(stageAt(1.7501, 0.31, 0.62), stageAt(1.75, 0.31, 0.62));
}

TEST(StageGeometry, AnUnseenPictureCastsNoShadow) {
    auto instruction = plainInstruction({0, 100}, {640, 360});
    instruction->shadowIntensity = 1;
    const StageGeometry stage = stageGeometry(*instruction, {});
    EXPECT_FALSE(stage.showsPicture);
    EXPECT_FALSE(stage.castsShadow);
    instruction->videoNaturalSize = {200000, 100}; // a line of 0.32 pixels
    EXPECT_FALSE(stageGeometry(*instruction, {}).showsPicture);
    instruction->videoNaturalSize = {640, 360};
    EXPECT_TRUE(stageGeometry(*instruction, {}).castsShadow);
}

TEST(StageGeometry, OddNumbersStayFinite) {
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double odd : {infinity, -infinity, std::nan(""), 1e308, -1e308}) {
        for (const StageGeometry& stage : {stageAt(odd, 0.5, 0.5), stageAt(2, odd, odd), stageAt(2, 0.5, 0.5, odd),
                                           stageAt(2, 0.5, 0.5, 0.05, odd), stageAt(odd, odd, odd, odd, odd)}) {
            for (const double value : {stage.frameRect.x, stage.frameRect.y, stage.frameRect.width,
                                       stage.frameRect.height, stage.cornerRadius, stage.camera.zoom})
                EXPECT_TRUE(std::isfinite(value)) << odd;
        }
    }
}

TEST(StageGeometry, OutsideOfThePictureIsWhatItDoesNotCover) {
    for (const StageGeometry& stage : {stageAt(1, 0.5, 0.5), stageAt(1, 0.5, 0.5, 0.05, 0.04), stageAt(1.2, 0, 0.4),
                                       stageAt(2, 0.5, 0.5), stageAt(1, 0.5, 0.5, 0), stageAt(1, 0.5, 0.5, 0.49)}) {
        for (const PixelBox& box :
             {PixelBox{0, 0, 1920, 1080}, PixelBox{90, 40, 40, 60}, PixelBox{1800, 1000, 60, 80}}) {
            const auto parts = outsidePicture(stage, box);
            Coverage coverage({stage.frameRect, stage.cornerRadius}, 1920, 1);
            for (int y = box.y; y < box.bottom(); ++y) {
                const CoverageRow& row = coverage.row(y);
                for (int x = box.x; x < box.right(); ++x) {
                    const auto holders = std::ranges::count_if(parts, [&](const PixelBox& part) {
                        return x >= part.x && x < part.right() && y >= part.y && y < part.bottom();
                    });
                    ASSERT_LE(holders, 1) << x << ' ' << y;
                    if (holders == 0) { ASSERT_EQ(row.weightAt(x), kCovered) << x << ' ' << y; }
                }
            }
        }
    }
}

TEST(StageShadow, FallsStraightDownAndGrowsSofterWithItsStrength) {
    const RoundedRectangle picture{{100, 50, 400, 200}, 8};
    const ShadowShape half = stageShadow(picture, 0.5);
    EXPECT_NEAR(half.caster.rect.y, 53, 1e-9);
    EXPECT_EQ(half.caster.rect.x, 100);
    EXPECT_NEAR(half.sigma, 6, 1e-9);
    EXPECT_NEAR(half.opacity, 0.25, 1e-9);
    EXPECT_EQ(stageShadow(picture, 1).opacity, stageShadow(picture, 40).opacity);
}

} // namespace
} // namespace morvelin
