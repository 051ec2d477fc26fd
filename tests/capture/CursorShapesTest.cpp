// Which pointer shapes a take keeps, which of them are arrows, and when each showed.

#include <gtest/gtest.h>

#include "base/TemporaryFolder.h"
#include "capture/CursorShapeLibrary.h"
#include "capture/CursorShapeRecorder.h"
#include "capture/CursorTracker.h"
#include "capture/InMemoryPointer.h"
#include "core/base/SimulatedEventLoop.h"
#include "platform/null/NullScreenSource.h"
#include "media/PNG.h"
#include "storage/CursorShapeFiles.h"

namespace morvelin {

namespace {

using Place = CursorShapeRecorder::Place;

/// An image of `scale` times the drawing's size; '#' is opaque, all else transparent.
Image drawn(const std::vector<std::string>& rows, int scale, std::uint8_t shade = 0) {
    Image image;
    image.size = {static_cast<int>(rows[0].size()) * scale, static_cast<int>(rows.size()) * scale};
    for (int y = 0; y < image.size.height; ++y)
        for (int x = 0; x < image.size.width; ++x) {
            const bool isOn = rows[static_cast<std::size_t>(y / scale)][static_cast<std::size_t>(x / scale)] == '#';
            const std::uint8_t colour = isOn ? shade : 0;
            image.pixels.insert(image.pixels.end(),
                                {colour, colour, colour, static_cast<std::uint8_t>(isOn ? 255 : 0)});
        }
    return image;
}

const std::vector<std::string> kArrow{"#.......", "##......", "###.....", "####....",
                                      "#####...", "######..", "##......", "#......."};
const std::vector<std::string> kBeam{"###", ".#.", ".#.", ".#.", ".#.", "###"};

PointerShape shapeOf(std::uint64_t identity, Image image) {
    PointerShape shape{identity, std::move(image), 0, 0, 1, 1};
    shape.width = shape.image.size.width;
    shape.height = shape.image.size.height;
    return shape;
}

class CursorShapeRecorderTest : public testing::Test {
protected:
    CursorShapeRecorderTest() { pointer.systemArrow = shapeOf(0, drawn(kArrow, 3)); }

    void show(std::uint64_t identity, const Image& image) { pointer.shown = shapeOf(identity, image); }
    RecordedCursorShapes recorded(const CursorShapeRecorder& recorder) { return recorder.recorded(1920, 1080); }

    InMemoryPointer pointer;
};

} // namespace

TEST_F(CursorShapeRecorderTest, KeepsOneShapeAndOneChangeForAnArrowThatStays) {
    CursorShapeRecorder recorder(pointer, 1);
    show(7, drawn(kArrow, 3));
    for (int index = 0; index < 90; ++index) recorder.sample(SourceTime(index / 30.0), Place::InsideCapture);
    const auto [track, images] = recorded(recorder);
    EXPECT_EQ(track.shapes.size(), 1U);
    EXPECT_EQ(track.shapes[0].kind, CursorShapeTrack::Kind::Arrow);
    EXPECT_EQ(track.changes, (std::vector<CursorShapeTrack::Change>{{0_s, 0}}));
    EXPECT_EQ(images.size(), 1U);
    EXPECT_EQ(pointer.shapeQuestions, 1) << "an unchanged pointer object is not looked at again";
}

TEST_F(CursorShapeRecorderTest, NotesEachChangeOnceAndReusesShapes) {
    CursorShapeRecorder recorder(pointer, 2);
    show(7, drawn(kBeam, 4));
    recorder.sample(0_s, Place::InsideCapture);
    recorder.sample(0.1_s, Place::InsideCapture);
    show(8, drawn(kArrow, 3)); // another object, the same arrow
    recorder.sample(0.2_s, Place::InsideCapture);
    recorder.sample(0.3_s, Place::OutsideCapture);
    recorder.sample(0.4_s, Place::OutsideCapture);
    recorder.sample(0.5_s, Place::InsideCapture);
    pointer.shown.reset();
    recorder.sample(0.6_s, Place::InsideCapture);
    const auto [track, images] = recorded(recorder);
    EXPECT_EQ(track.changes, (std::vector<CursorShapeTrack::Change>{
                                 {0_s, 1}, {0.2_s, 0}, {0.3_s, std::nullopt}, {0.5_s, 0}, {0.6_s, std::nullopt}}));
    ASSERT_EQ(track.shapes.size(), 2U);
    EXPECT_EQ(track.shapes[1].kind, CursorShapeTrack::Kind::Other);
    EXPECT_EQ(track.shapes[1].width, 6) << "12 pixels are 6 points at scale 2";
    EXPECT_EQ(track.captureWidth, 1920);
}

TEST_F(CursorShapeRecorderTest, StartsWithAChangeAlsoOutside) {
    CursorShapeRecorder recorder(pointer, 1);
    recorder.sample(0_s, Place::OutsideCapture);
    recorder.sample(0.1_s, Place::OutsideCapture);
    EXPECT_EQ(recorded(recorder).track.changes, (std::vector<CursorShapeTrack::Change>{{0_s, std::nullopt}}));
}

TEST_F(CursorShapeRecorderTest, TakesADenserArrowForAnArrow) {
    CursorShapeRecorder recorder(pointer, 1);
    show(7, drawn(kArrow, 6, 40));
    recorder.sample(0_s, Place::InsideCapture);
    const auto track = recorded(recorder).track;
    ASSERT_EQ(track.shapes.size(), 2U) << "its pixels differ";
    EXPECT_EQ(track.shapes[1].kind, CursorShapeTrack::Kind::Arrow);
}

TEST_F(CursorShapeRecorderTest, CallsTheFirstShapeAnArrowWhereTheSystemHasNone) {
    pointer.systemArrow.reset();
    CursorShapeRecorder recorder(pointer, 1);
    show(7, drawn(kBeam, 4));
    recorder.sample(0_s, Place::InsideCapture);
    show(8, drawn(kArrow, 3));
    recorder.sample(0.1_s, Place::InsideCapture);
    const auto track = recorded(recorder).track;
    ASSERT_EQ(track.shapes.size(), 2U);
    EXPECT_EQ(track.shapes[0].kind, CursorShapeTrack::Kind::Arrow);
    EXPECT_EQ(track.shapes[1].kind, CursorShapeTrack::Kind::Other);
}

TEST_F(CursorShapeRecorderTest, HearsFromTheTrackerWhetherThePointerIsInside) {
    SimulatedEventLoop loop;
    NullScreenSource screen(ScreenError{});
    CursorTracker tracker(loop, pointer, screen);
    CursorShapeRecorder recorder(pointer, 1);
    show(7, drawn(kArrow, 3));
    pointer.place = DesktopPoint{10, 10};
    tracker.start({0, 0, 100, 100}, {}, loop.now(), &recorder);
    loop.advance(0.5_s);
    pointer.place = DesktopPoint{100, 10}; // just past the right edge
    loop.advance(0.5_s);
    tracker.stop();
    const auto changes = recorded(recorder).track.changes;
    ASSERT_EQ(changes.size(), 2U);
    EXPECT_EQ(changes[0].shape, 0);
    EXPECT_EQ(changes[1].shape, std::nullopt);
    EXPECT_NEAR(changes[1].t.value, 0.5, 0.034);
}

TEST(CursorSilhouette, ComparesOutlinesWhateverTheirSizeAndMargin) {
    const auto arrow = CursorSilhouette::of(drawn(kArrow, 3));
    std::vector<std::string> withMargin{"............"};
    for (const std::string& row : kArrow) withMargin.push_back(".." + row + "..");
    EXPECT_EQ(arrow.likeness(CursorSilhouette::of(drawn(withMargin, 5))), 1);
    EXPECT_LT(arrow.likeness(CursorSilhouette::of(drawn(kBeam, 4))), 0.6);
    // An eighth of the arrow's columns more: (n and) / (n or) falls by what was added.
    EXPECT_EQ(CursorSilhouette::of(drawn({"##", "#."}, 12)).cells.count(), 432U);
    EXPECT_EQ(CursorSilhouette::of(drawn({"##", "##"}, 1)).cells.count(), 576U) << "small images are stretched";
    EXPECT_NEAR(CursorSilhouette::of(drawn({"##", "#."}, 12)).likeness(CursorSilhouette::of(drawn({"##", "##"}, 1))),
                0.75, 1e-12);
    EXPECT_EQ(CursorSilhouette::of(drawn({"..", ".."}, 4)).likeness(arrow), 0);
    EXPECT_EQ(CursorSilhouette().likeness({}), 0) << "no cell in either";
}

TEST(CursorShapeLibrary, GivesTheShapeInForceAndItsImage) {
    const TemporaryFolder folder;
    EXPECT_EQ(CursorShapeLibrary::load(folder.path()), nullptr);

    CursorShapeTrack track;
    track.shapes = {{.id = 0}, {.id = 1}, {.id = 2}};
    track.changes = {{1_s, 0}, {2_s, 1}, {3_s, std::nullopt}, {4_s, 9}};
    const Image image = drawn(kBeam, 2, 200);
    const auto png = encodePNG(image).value();
    ASSERT_TRUE(ProjectBundle::writeCursorShapes({track, {{0, std::string(png.begin(), png.end())}, {1, "no PNG"}}},
                                                 folder.path(), [](std::string_view) {}));
    const auto library = CursorShapeLibrary::load(folder.path());
    ASSERT_TRUE(library);
    struct Case {
        SourceTime t;
        std::optional<std::int64_t> id;
    };
    for (const auto& [t, id] : {Case{0.99_s, std::nullopt}, Case{1_s, 0}, Case{1.99_s, 0}, Case{2_s, 1},
                                Case{3.5_s, std::nullopt}, Case{100_s, std::nullopt}}) {
        const auto* shape = library->shape(t);
        EXPECT_EQ(shape != nullptr ? std::optional(shape->id) : std::nullopt, id) << t.value;
    }
    ASSERT_TRUE(library->image(0));
    EXPECT_EQ(*library->image(0), image);
    EXPECT_FALSE(library->image(1)) << "a broken image costs that shape alone";

    put(folder.path() / "cursorShapes.json", "{");
    EXPECT_EQ(CursorShapeLibrary::load(folder.path()), nullptr);
}

} // namespace morvelin
