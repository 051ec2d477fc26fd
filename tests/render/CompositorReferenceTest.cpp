// The fast compositor against the plain one, layer by layer and all together.

#include <gtest/gtest.h>

#include "CompositorReference.h"
#include "CompositorScenes.h"
#include "media/ColorConversion.h"
#include "render/BackgroundPresets.h"
#include "render/Compositor.h"

namespace morvelin {
namespace {

using namespace test;

constexpr PixelSize kVideo{152, 86};
constexpr PixelSize kOutput{160, 90};

struct Scene {
    std::string name;
    std::shared_ptr<CompositionInstruction> instruction;
    double time = 1;
    PixelSize camera{}; ///< empty: none
};

void expectAgreement(const Scene& scene) {
    const PixelSize size = scene.instruction->videoNaturalSize;
    const auto picture = desktopPicture(size.width > 0 ? size : kVideo, 7);
    ShownFrames frames = shown(picture, 1);
    if (scene.camera.width > 0) frames.camera = movieFrame(desktopPicture(scene.camera, 9), 5);
    const FramePlan plan = framePlan(*scene.instruction, EditTime(scene.time), frames.numbers());
    const ReferenceCompositor reference(*scene.instruction);
    for (const Subsampling subsampling : {Subsampling::Quarter, Subsampling::None}) {
        Compositor compositor(scene.instruction, subsampling);
        const ComposedFrame frame = compositor.compose(plan, frames);
        const Difference apart = difference(reference.compose(plan, frames, subsampling), frame.picture);
        const char* kind = subsampling == Subsampling::Quarter ? "4:2:0" : "4:4:4";
        EXPECT_LT(apart.mean, 0.6) << scene.name << ' ' << kind;
        EXPECT_LT(apart.share, 0.0005) << scene.name << ' ' << kind;
        EXPECT_LT(apart.worst, 10) << scene.name << ' ' << kind;
    }
}

TEST(CompositorReference, Backgrounds) {
    for (const char* id :
         {"palette-dune", "palette-ember", "aurora", "navy-ember", "mesh-nebula", "mesh-glacier", "mesh-terra"}) {
        auto instruction = plainInstruction({0, 0}, kOutput);
        instruction->background = gradientBackground(id);
        expectAgreement({id, instruction});
        instruction->denseFrames = view(1.8, 0.3, 0.7);
        expectAgreement({std::string(id) + " magnified", instruction});
    }
    for (const BackgroundType type : {BackgroundType::Wallpaper, BackgroundType::Image}) {
        auto fallback = plainInstruction({0, 0}, kOutput);
        fallback->background = Background{type, "", {}, "forest", {}};
        expectAgreement({"fallback", fallback});
    }
    for (const std::string_view id : BackgroundPresets::wallpaperIDs()) {
        auto instruction = plainInstruction({0, 0}, kOutput);
        instruction->background = Background{BackgroundType::Wallpaper, "", {}, std::string(id), {}};
        expectAgreement({std::string(id), instruction});
    }
    for (const PixelSize size : {PixelSize{90, 200}, {700, 300}}) {
        auto instruction = plainInstruction({0, 0}, kOutput);
        instruction->background = Background{BackgroundType::Image, "", {}, "", {}};
        instruction->backgroundImage = std::make_shared<const Image>(imageOf(*desktopPicture(size, 4)));
        expectAgreement({"image", instruction});
    }
    auto solid = plainInstruction({0, 0}, kOutput);
    solid->background = Background{BackgroundType::SolidColor, "", {0.2, 0.5, 0.9, 0.6}, "", {}};
    expectAgreement({"solid", solid});
}

TEST(CompositorReference, Shadows) {
    for (const double intensity : {0.08, 0.5, 1.0, 3.0}) {
        for (const double zoom : {1.0, 1.6}) {
            auto instruction = plainInstruction(kVideo, kOutput);
            instruction->background = Background{BackgroundType::SolidColor, "", {0.9, 0.8, 0.3, 1}, "", {}};
            instruction->padding = 0.12;
            instruction->cornerRadius = 0.04;
            instruction->shadowIntensity = intensity;
            instruction->denseFrames = view(zoom, 0.1, 0.9);
            expectAgreement({"shadow " + std::to_string(intensity) + " at " + std::to_string(zoom), instruction});
        }
    }
}

TEST(CompositorReference, ScaledPictures) {
    struct Case {
        PixelSize video;
        double padding, zoom, x, y;
    };
    for (const Case& c : {Case{kVideo, 0, 1, 0.5, 0.5},
                          {kVideo, 0.05, 1, 0.5, 0.5},
                          {kVideo, 0.1, 1.37, 0.31, 0.62},
                          {kVideo, 0, 1.75, 0.9, 0.1},
                          {kVideo, 0.2, 3.1, 0.45, 0.55},
                          {{480, 272}, 0.05, 1, 0.5, 0.5},
                          {{640, 200}, 0.08, 1.2, 0.2, 0.5},
                          {{64, 200}, 0.05, 1.1, 0.5, 0.8},
                          {{16, 16}, 0.05, 1, 0.5, 0.5},
                          {{2, 2}, 0, 1, 0.5, 0.5},
                          {{202, 114}, 0.05, 20, 0.77, 0.23}}) {
        auto instruction = plainInstruction(c.video, kOutput);
        instruction->background = Background{BackgroundType::SolidColor, "", {0.1, 0.6, 0.5, 1}, "", {}};
        instruction->padding = c.padding;
        instruction->cornerRadius = 0.03;
        instruction->denseFrames = view(c.zoom, c.x, c.y);
        expectAgreement({std::to_string(c.video.width) + " wide at " + std::to_string(c.zoom), instruction});
    }
}

TEST(CompositorReference, Masks) {
    for (const double radius : {0.4, 1.5, 5.0, 9.0, 22.0}) {
        for (const double zoom : {1.0, 2.2}) {
            auto instruction = plainInstruction(kVideo, kOutput);
            instruction->padding = 0.06;
            instruction->cornerRadius = 0.04;
            instruction->denseFrames = view(zoom, 0.4, 0.4);
            instruction->maskKeyframes = {mask({0.21, 0.17, 0.33, 0.41}, radius),
                                          mask({0.4, 0.3, 0.3, 0.4}, 2 * radius), mask({-0.1, 0.7, 0.5, 0.6}, radius)};
            expectAgreement({"mask " + std::to_string(radius) + " at " + std::to_string(zoom), instruction});
        }
    }
}

TEST(CompositorReference, RingsAndPointers) {
    for (const double zoom : {1.0, 1.75, 4.0}) {
        for (const double time : {1.02, 1.2, 1.5}) {
            auto instruction = plainInstruction(kVideo, kOutput);
            instruction->background = gradientBackground("palette-lagoon");
            instruction->padding = 0.05;
            instruction->cornerRadius = 0.04;
            instruction->denseFrames = view(zoom, 0.35, 0.4);
            instruction->clickPings = {{EditTime(1), 0.33, 0.41, MouseButton::Left, 2},
                                       {EditTime(0.9), 0.01, 0.03, MouseButton::Right, 1},
                                       {EditTime(1), 0.36, 0.45, MouseButton::Other, 1}};
            instruction->cursorScene = restingPointer(0.337, 0.421, zoom);
            expectAgreement({"overlays at " + std::to_string(zoom), instruction, time});
        }
    }
}

void annotate(CompositionInstruction& instruction) {
    instruction.focusKeyframes = {focus({0.2, 0.25, 0.4, 0.3}, 1), focus({0.75, -0.05, 0.3, 0.3}, 2)};
    instruction.tapTapKeyframes = {tapTap(0.6, 0.5, 0.3), tapTap(0.97, 0.9, 0.25)};
}

TEST(CompositorReference, OvalsAndHands) {
    for (const char* kind : {"ovals", "hands"}) {
        for (const double zoom : {1.0, 2.3}) {
            for (const double time : {0.08, 0.5, 1.93}) {
                auto instruction = plainInstruction(kVideo, kOutput);
                instruction->background = gradientBackground("palette-lagoon");
                instruction->padding = 0.06;
                instruction->cornerRadius = 0.04;
                instruction->denseFrames = view(zoom, 0.4, 0.4);
                instruction->tapTapStyle = zoom > 1 ? TapTapStyle::Glove : TapTapStyle::Pointer;
                annotate(*instruction);
                if (std::string(kind) == "ovals") instruction->tapTapKeyframes.clear();
                if (std::string(kind) == "hands") instruction->focusKeyframes.clear();
                expectAgreement({kind + std::to_string(zoom), instruction, time});
            }
        }
    }
}

TEST(CompositorReference, CameraBubblesAndCaptions) {
    struct Case {
        NormalizedRect rect;
        double radius;
        bool isMirrored;
        PixelSize camera;
    };
    for (const Case& c : {Case{{0.7, 0.6, 0.25, 0.25}, 0.5, true, {320, 180}},
                          {{0.02, 0.03, 0.413, 0.4}, 0.2, false, {64, 96}},
                          {{0.9, 0.9, 0.6, 0.6}, 0, true, {40, 30}}}) {
        auto instruction = plainInstruction(kVideo, kOutput);
        instruction->background = gradientBackground("palette-ember");
        instruction->padding = 0.06;
        instruction->denseFrames = view(1.4, 0.4, 0.4);
        instruction->cameraSettings = CameraSettings{c.rect, c.radius, c.isMirrored, {}};
        instruction->captionCues = {caption("Every layer, one by one", {0.2, 0.6, 1.4, 1.6, 1.8})};
        instruction->captionSize = 1.5;
        expectAgreement({"bubble", instruction, 1, c.camera});
    }
}

TEST(CompositorReference, EverythingAtRandom) {
    std::mt19937 random(11);
    std::uniform_real_distribution<double> unit(0, 1);
    for (int round = 0; round < 10; ++round) {
        auto instruction = plainInstruction({120 + 2 * static_cast<int>(100 * unit(random)), 112}, kOutput);
        instruction->background = gradientBackground(round % 2 == 0 ? "palette-orchid" : "morv-warm");
        instruction->padding = 0.15 * unit(random);
        instruction->cornerRadius = 0.06 * unit(random);
        instruction->shadowIntensity = unit(random);
        instruction->denseFrames = view(0.8 + 2.5 * unit(random), unit(random), unit(random));
        instruction->maskKeyframes = {mask({unit(random), unit(random), 0.4, 0.3}, 12 * unit(random))};
        instruction->clickPings = {{EditTime(0.8), unit(random), unit(random), MouseButton::Left, 2}};
        instruction->cursorScene = restingPointer(unit(random), unit(random), 0.5 + 2 * unit(random));
        annotate(*instruction);
        instruction->cameraSettings = CameraSettings{{unit(random), unit(random), 0.3, 0.3}, unit(random), true, {}};
        instruction->captionCues = {caption("All at once", {0.1, 0.9, 1.7})};
        expectAgreement({"random " + std::to_string(round), instruction, 1, {160, 120}});
    }
}

} // namespace
} // namespace morvelin
