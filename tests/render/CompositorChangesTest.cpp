// The list of changed boxes and the pictures drawn by it: never less than what differs, and what was drawn piece by
// piece is, to the bit, what is drawn at once.

#include <cstring>

#include <gtest/gtest.h>

#include "CompositorScenes.h"
#include "render/Compositor.h"

namespace morvelin {
namespace {

using namespace test;

constexpr PixelSize kVideo{320, 180};
constexpr PixelSize kOutput{288, 162};

Picture copyOf(const Picture& picture) {
    Picture copy(picture.size(), picture.subsampling());
    for (int p = 0; p < 3; ++p)
        for (int y = 0; y < picture.plane(p).height; ++y)
            std::memcpy(copy.plane(p).row(y), picture.plane(p).row(y),
                        static_cast<std::size_t>(picture.plane(p).width));
    return copy;
}

/// Pixels whose samples differ in any plane, outside of all boxes.
int differingOutside(const Picture& a, const Picture& b, std::span<const PixelBox> boxes) {
    int count = 0;
    for (int p = 0; p < 3; ++p) {
        const int d = a.plane(p).width == a.size().width ? 1 : 2;
        for (int y = 0; y < a.plane(p).height; ++y) {
            for (int x = 0; x < a.plane(p).width; ++x) {
                const bool isInside = std::ranges::any_of(boxes, [&](const PixelBox& box) {
                    return x * d >= box.x && x * d < box.right() && y * d >= box.y && y * d < box.bottom();
                });
                if (!isInside && a.plane(p).row(y)[x] != b.plane(p).row(y)[x]) ++count;
            }
        }
    }
    return count;
}

/// A film in which everything happens: a ramp, a rest, typing, masks that come and go, clicks, a pointer that moves.
std::shared_ptr<CompositionInstruction> busyFilm(PixelSize output = kOutput) {
    auto film = plainInstruction(kVideo, output);
    film->background = gradientBackground("palette-verdant");
    film->padding = 0.06;
    film->cornerRadius = 0.03;
    film->shadowIntensity = 0.6;
    film->denseFrames = {{EditTime(0), 1, 0.5, 0.5},
                         {EditTime(1), 1, 0.5, 0.5},
                         {EditTime(1.3), 1.9, 0.3, 0.6},
                         {EditTime(3), 1.9, 0.3, 0.6},
                         {EditTime(3.3), 1, 0.5, 0.5}};
    film->maskKeyframes = {mask({0.2, 0.5, 0.2, 0.15}, 3, 0.3, 2), mask({0.25, 0.55, 0.3, 0.3}, 9, 0.6, 2.6)};
    film->clickPings = {{EditTime(0.4), 0.3, 0.6, MouseButton::Left, 2},
                        {EditTime(1.8), 0.31, 0.62, MouseButton::Right, 1},
                        {EditTime(2.1), 0.02, 0.5, MouseButton::Left, 1}};
    film->focusKeyframes = {focus({0.3, 0.4, 0.3, 0.2}, 1)};
    film->tapTapKeyframes = {tapTap(0.6, 0.4, 0.3)};
    film->cameraSettings = CameraSettings{{0.7, 0.05, 0.25, 0.25}, 0.5, true, {}};
    film->captionCues = {caption("Said while the pointer moves", {0.1, 0.5, 0.9, 1.2, 1.6})};
    std::vector<CursorEvent> events;
    for (int i = 0; i < 120; ++i) {
        CursorEvent event;
        event.timestamp = SourceTime(i / 30.0);
        event.x = i / 30 % 2 == 0 ? 0.2 + i * 0.005 : 0.5;
        event.y = 0.6 + 0.1 * std::sin(i * 0.2);
        events.push_back(event);
    }
    film->cursorScene = pointerAlong(events);
    return film;
}

/// The recording: every third frame types a few pixels, now and then a window moves.
std::vector<ShownFrames> busyRecording(int count) {
    std::vector<ShownFrames> frames;
    auto picture = desktopPicture(kVideo, 3);
    std::int64_t number = 0;
    for (int i = 0; i < count; ++i) {
        if (i % 3 == 2) {
            picture = std::make_shared<Picture>(copyOf(*picture));
            const int size = i % 30 == 2 ? 60 : 5;
            for (int p = 0; p < 3; ++p)
                for (int y = 0; y < size / (p == 0 ? 1 : 2); ++y)
                    std::memset(picture->plane(p).row((40 + i % 40) / (p == 0 ? 1 : 2) + y) + (i * 7) % 80,
                                40 + (i * 29) % 150, static_cast<std::size_t>(size));
            ++number;
        }
        frames.push_back(shown(picture, number));
        // The camera starts late, at another rate.
        if (i > 10)
            frames.back().camera = movieFrame(desktopPicture({64, 48}, static_cast<std::uint32_t>(i / 4)), i / 4);
    }
    return frames;
}

TEST(CompositorChanges, PicturesDrawnByBoxesEqualThoseDrawnAtOnce) {
    const auto recording = busyRecording(100);
    for (const Subsampling subsampling : {Subsampling::Quarter, Subsampling::None}) {
        const auto film = busyFilm(subsampling == Subsampling::Quarter ? kOutput : PixelSize{287, 161});
        Compositor compositor(film, subsampling);
        std::optional<Picture> before;
        int wholeFrames = 0;
        for (std::size_t i = 0; i < recording.size(); ++i) {
            const EditTime t(static_cast<double>(i) / 30);
            const FramePlan plan = framePlan(*film, t, recording[i].numbers());
            const ComposedFrame frame = compositor.compose(plan, recording[i]);
            Compositor fresh(film, compositor.stageImage());
            const ComposedFrame whole = fresh.compose(plan, recording[i]);
            ASSERT_EQ(differingOutside(whole.picture, frame.picture, {}), 0) << "frame " << i;
            if (before) { ASSERT_EQ(differingOutside(*before, frame.picture, frame.changed), 0) << "frame " << i; }
            before = copyOf(frame.picture);
            wholeFrames += frame.changed.size() == 1 && frame.changed[0].width == frame.picture.size().width ? 1 : 0;
        }
        EXPECT_LT(wholeFrames, 30) << "only a moving camera redraws everything";
    }
}

TEST(CompositorChanges, NothingChangesBetweenEqualPlans) {
    const auto film = busyFilm();
    const auto recording = busyRecording(1);
    Compositor compositor(film, Subsampling::Quarter);
    const FramePlan plan = framePlan(*film, EditTime(0.1), {0});
    EXPECT_EQ(compositor.compose(plan, recording[0]).changed.size(), 1U) << "the first frame is all new";
    EXPECT_TRUE(compositor.compose(plan, recording[0]).changed.empty());
}

TEST(CompositorChanges, AMovedPointerChangesLittle) {
    const auto film = plainInstruction(kVideo, kOutput);
    const auto recording = busyRecording(1);
    Compositor compositor(film, Subsampling::Quarter);
    for (const double x : {0.3, 0.32, 0.7}) {
        film->cursorScene = restingPointer(x, 0.5);
        compositor.compose(framePlan(*film, EditTime(0), {0}), recording[0]);
    }
    film->cursorScene = restingPointer(0.2, 0.5);
    int area = 0;
    for (const PixelBox& box : compositor.compose(framePlan(*film, EditTime(0), {0}), recording[0]).changed) {
        EXPECT_EQ(box.x % 2 + box.y % 2 + box.width % 2 + box.height % 2, 0);
        area += box.width * box.height;
    }
    EXPECT_LT(area, 2 * 40 * 40);
}

TEST(CompositorChanges, OddFilmsAreDrawnWithoutHarm) {
    const auto picture = desktopPicture(kVideo, 5);
    for (const double zoom : {1e9, -3.0, 1.0, 400.0}) {
        for (const double padding : {0.6, 0.499, -1.0, 1e12}) {
            for (const PixelSize video : {kVideo, PixelSize{0, 0}, PixelSize{0, 40}, PixelSize{4000, 2}}) {
                auto film = busyFilm({64, 36});
                film->videoNaturalSize = video;
                film->padding = padding;
                film->cornerRadius = 7;
                film->shadowIntensity = 1e6;
                film->denseFrames = view(zoom, 2, -5);
                film->maskKeyframes = {mask({-1e6, 0.2, 2e6, 1e9}, 1e300), mask({0.5, 0.5, 1e-12, 0.1}, 1e-300)};
                film->clickAnimationColor = CodableColor{5, -2, 1e9, 40};
                for (const Subsampling subsampling : {Subsampling::Quarter, Subsampling::None}) {
                    Compositor compositor(film, subsampling);
                    for (const double t : {0.45, 0.5})
                        compositor.compose(framePlan(*film, EditTime(t), {0}), shown(picture, 0));
                }
            }
        }
    }
}

TEST(CompositorChanges, CompositorsShareAStage) {
    const auto film = busyFilm();
    const auto recording = busyRecording(1);
    Compositor first(film, Subsampling::None);
    Compositor second(film, first.stageImage());
    EXPECT_EQ(first.stageImage(), second.stageImage());
    const FramePlan plan = framePlan(*film, EditTime(0.5), {0});
    const Picture& a = first.compose(plan, recording[0]).picture;
    EXPECT_EQ(differingOutside(a, second.compose(plan, recording[0]).picture, {}), 0);
    EXPECT_EQ(a.subsampling(), Subsampling::None);
}

} // namespace
} // namespace morvelin
