#include "render/EditComposition.h"

#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace morvelin {
namespace {

MovieProperties movie(double start, double end) {
    MovieProperties properties;
    properties.size = {640, 360};
    properties.start = SourceTime(start);
    properties.end = SourceTime(end);
    return properties;
}

VideoFragment fragment(double start, double end, double speed = 1, std::int64_t order = 0) {
    return VideoFragment{UUID{}, SourceTime(start), SourceTime(end), speed, order, {}};
}

EditComposition::Segment segment(double start, double end, double from, double to, double speed = 1) {
    return {EditTime(start), EditTime(end), SourceTime(from), SourceTime(to), speed};
}

EditComposition built(const MovieProperties& properties, const std::vector<VideoFragment>& fragments) {
    const auto composition = FragmentCompositionBuilder::build(properties, fragments);
    EXPECT_TRUE(composition);
    return composition.value_or(EditComposition());
}

TEST(EditComposition, LaysFragmentsEndToEnd) {
    struct Case {
        const char* what;
        std::vector<VideoFragment> fragments;
        std::vector<EditComposition::Segment> segments;
    };
    const std::vector<Case> cases{
        {"by order, not by place",
         {fragment(5, 6, 1, 1), fragment(0, 2, 1, 0)},
         {segment(0, 2, 0, 2), segment(2, 3, 5, 6)}},
        {"twice as fast", {fragment(0, 10, 2)}, {segment(0, 5, 0, 10, 2)}},
        {"a speed next to 1 is none", {fragment(0, 10, 1.0005)}, {segment(0, 10, 0, 10)}},
        {"limited to the track", {fragment(-1, 1), fragment(9, 12, 1, 1)}, {segment(0, 1, 0, 1), segment(1, 2, 9, 10)}},
        {"too short to show",
         {fragment(0, 1), fragment(3, 3.001, 1, 1), fragment(5, 6, 1, 2)},
         {segment(0, 1, 0, 1), segment(1, 2, 5, 6)}},
        {"standing still, reversed, beyond the end", {fragment(0, 1, 0), fragment(2, 1), fragment(11, 12)}, {}},
        {"none", {}, {}}};
    for (const Case& c : cases) {
        const EditComposition composition = built(movie(0, 10), c.fragments);
        EXPECT_EQ(composition.segments(), c.segments) << c.what;
        EXPECT_EQ(composition.timelineDuration().value, c.segments.empty() ? 0 : c.segments.back().end.value) << c.what;
    }
}

TEST(EditComposition, EachPieceStartsExactlyWhereTheOneBeforeEnds) {
    std::vector<VideoFragment> fragments;
    for (int i = 0; i < 300; ++i) fragments.push_back(fragment(i * 0.1, i * 0.1 + 0.0333333, 1.7, i));
    const EditComposition composition = built(movie(0, 40), fragments);
    for (std::size_t i = 1; i < composition.segments().size(); ++i)
        ASSERT_EQ(composition.segments()[i].start, composition.segments()[i - 1].end);
}

TEST(EditComposition, TellsTheMomentThatShows) {
    const EditComposition composition = built(movie(0, 10), {fragment(1, 3), fragment(8, 9, 0.5, 1)});
    struct Case {
        double t, source;
    };
    for (const Case& c : {Case{-1, 1}, {0, 1}, {1.5, 2.5}, {1.9999, 2.9999}, {2, 8}, {3, 8.5}, {4, 9}, {99, 9}})
        EXPECT_NEAR(composition.sourceTime(EditTime(c.t)).value, c.source, 1e-9) << c.t;
    EXPECT_EQ(EditComposition().sourceTime(EditTime(3)).value, 0);
}

TEST(EditComposition, APictureTimeForgivesTheTimeBaseButNeverCrossesACut) {
    // Frame 1 of 60 a second lies at 17 ms in a time base of milliseconds, after 1/60 s.
    const EditComposition composition = built(movie(0, 10), {fragment(0, 2), fragment(5, 6, 1, 1)});
    EXPECT_GE(composition.pictureTime(EditTime(1.0 / 60)).value, 0.017);
    EXPECT_LT(composition.pictureTime(EditTime(1.9999)).value, 2) << "the frame at 2 s was cut out";
    EXPECT_GE(composition.pictureTime(EditTime(2)).value, 5);
}

TEST(EditComposition, RefusesWhatCannotBeLaidOut) {
    using Kind = FragmentCompositionError::Kind;
    MovieProperties noPicture = movie(0, 10);
    noPicture.size = {};
    const auto missing = FragmentCompositionBuilder::build(noPicture, std::vector{fragment(0, 1)});
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error().kind, Kind::NoVideoTrack);
    EXPECT_EQ(missing.error().description(), "No video track in recording");

    const double nan = std::numeric_limits<double>::quiet_NaN();
    const auto broken = FragmentCompositionBuilder::build(movie(0, 10), std::vector{fragment(0, nan)});
    ASSERT_FALSE(broken);
    EXPECT_EQ(broken.error().description(), "Could not build edit composition");
}

} // namespace
} // namespace morvelin
