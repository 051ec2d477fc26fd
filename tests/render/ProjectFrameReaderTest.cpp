// Stills of real recordings: which frame they show, on which clock, and what is said where there is none.
#include "render/ProjectFrameReader.h"

#include <cmath>
#include <fstream>
#include <limits>

#include "media/ColorConversion.h"
#include "media/PNG.h"
#include "render/FilmFixture.h"
#include "render/FilmRenderer.h"
#include "render/StillPicture.h"

namespace morvelin {
namespace {

using testing::HasSubstr;
using enum FrameClock;

constexpr int kLongEdge = 1536;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// Opens real movies and counts them.
class CountingReaders final : public MovieReaderFactory {
public:
    Result<std::unique_ptr<MovieReader>, MovieReaderError> open(const std::filesystem::path& path) override {
        ++opened;
        return m_readers.open(path);
    }

    int opened = 0;

private:
    FFmpegMovieReaderFactory m_readers;
};

int numberIn(const Image& image) {
    int number = 0;
    for (int bit = 0; bit < kNumberBits; ++bit) {
        const PixelBox box = bitBox(bit);
        const int pixel = (box.y + 24) * image.size.width + box.x + 8;
        if (image.pixels[static_cast<std::size_t>(4 * pixel + 1)] > 120) number |= 1 << bit;
    }
    return number;
}

class ProjectFrameReaderTest : public FilmFixture {
protected:
    void show(ProjectBundle::Contents project) {
        m_reader.show(std::make_shared<const ProjectBundle::Contents>(std::move(project)));
    }
    std::string refusedSource(double at, FrameClock clock) {
        const auto frame = m_reader.read(at, clock, kLongEdge);
        EXPECT_FALSE(frame);
        return frame ? "" : frame.error().description();
    }
    std::string refusedRendered(double at) {
        const auto frame = m_reader.readRendered(EditTime(at), kLongEdge);
        EXPECT_FALSE(frame);
        return frame ? "" : frame.error().description();
    }
    static Image imageIn(const Result<ProjectFrameReader::Frame, FrameError>& frame) {
        EXPECT_TRUE(frame) << (frame ? "" : frame.error().description());
        return frame ? decodePNG(frame->pngData).value() : Image();
    }

    CountingReaders m_counting;
    ProjectFrameReader m_reader{m_counting, [](std::string_view) {}};
};

TEST_F(ProjectFrameReaderTest, AMomentIsFoundOnEitherClock) {
    // Given a take of 3 s of which the middle is cut out and the end plays twice as fast.
    record(90);
    show(plainProject({fragment(0, 1), fragment(2, 3, 2, 1)}));
    struct Case {
        double at;
        FrameClock clock;
        int number;
        std::optional<double> timeline;
        double source;
    };
    for (const Case& c : {Case{0, Timeline, 0, 0, 0},
                          {0.51, Timeline, 15, 0.51, 0.51},
                          {0.5, Timeline, 14, 0.5, 0.5}, // a frame that has just begun is not there yet
                          {1.25, Timeline, 74, 1.25, 2.5},
                          {1.5, Timeline, 89, 1.5, 3},
                          {1.5004, Timeline, 89, 1.5, 3}, // as a rounded duration may say
                          {0, Source, 0, 0, 0},
                          {1.5, Source, 44, {}, 1.5},
                          {2.5, Source, 74, 1.25, 2.5},
                          {3, Source, 89, 1.5, 3}}) {
        const auto frame = m_reader.read(c.at, c.clock, kLongEdge);
        ASSERT_TRUE(frame) << c.at;
        EXPECT_EQ(numberIn(imageIn(frame)), c.number) << c.at;
        EXPECT_EQ(frame->timelineTime, c.timeline ? std::optional(EditTime(*c.timeline)) : std::nullopt) << c.at;
        EXPECT_NEAR(frame->sourceTime.value, c.source, 1e-9) << c.at;
    }
}

TEST_F(ProjectFrameReaderTest, WhatIsOutsideIsRefusedInWords) {
    record(30);
    show(plainProject({fragment(0, 1, 2)}));
    EXPECT_EQ(refusedSource(-0.01, Timeline), "-0.01s is outside the edit timeline, which is 0.50s long.");
    EXPECT_EQ(refusedSource(0.501, Timeline), "0.50s is outside the edit timeline, which is 0.50s long.");
    EXPECT_EQ(refusedSource(1.01, Source), "1.01s is outside the source recording, which is 1.00s long.");
    for (const double at : {kNaN, kInfinity, -kInfinity, 1e300}) {
        EXPECT_THAT(refusedSource(at, Timeline), HasSubstr("s is outside the edit timeline"));
        EXPECT_THAT(refusedSource(at, Source), HasSubstr("s is outside the source recording"));
        EXPECT_THAT(refusedRendered(at), HasSubstr("s is outside the edit timeline"));
    }
    show(plainProject({}));
    EXPECT_EQ(refusedRendered(0), "0.00s is outside the edit timeline, which is 0.00s long.");
    EXPECT_EQ(refusedSource(0, Timeline), "0.00s is outside the edit timeline, which is 0.00s long.");
    EXPECT_TRUE(m_reader.read(0, Source, kLongEdge)) << "the recording is still there";
    show(plainProject({fragment(0, 0.0005)}));
    EXPECT_TRUE(m_reader.readRendered(EditTime(0), kLongEdge)) << "too short for a film, yet a timeline";
}

TEST_F(ProjectFrameReaderTest, ARecordingThatIsBrokenIsToldAsFarAsItIs) {
    show(plainProject({fragment(0, 3)}));
    EXPECT_EQ(refusedSource(0, Source), "This project has no recording.mov to read a frame from.");
    EXPECT_EQ(refusedRendered(0), "This project has no recording.mov to read a frame from.");
    std::ofstream(m_bundle / "recording.mov") << "no movie";
    EXPECT_EQ(refusedSource(0, Source),
              "Could not decode the frame: “recording.mov” is no movie, or it is cut off before its index.");

    // Given a movie of which only the first 2 s of 5 s are left, and an edit that shows its moments in another order.
    record(60);
    auto project = plainProject({fragment(3, 5), fragment(0, 3, 1, 1)});
    project.capture.originalDuration = 5_s;
    show(project);
    EXPECT_EQ(refusedSource(4, Source), "Could not decode the frame: The recording is cut off at 2.00 s.");
    EXPECT_EQ(refusedSource(1.5, Timeline), "Could not decode the frame: The recording is cut off at 2.00 s.");
    EXPECT_EQ(refusedRendered(1.5), "Could not decode the frame: The recording is cut off at 2.00 s.");
    EXPECT_EQ(refusedSource(5.1, Source), "5.10s is outside the source recording, which is 5.00s long.");
    EXPECT_EQ(numberIn(imageIn(m_reader.readRendered(EditTime(2.52), kLongEdge))), 15) << "what is left has its place";
    EXPECT_EQ(numberIn(imageIn(m_reader.read(2.52, Timeline, kLongEdge))), 15);
}

TEST_F(ProjectFrameReaderTest, ARenderedStillIsTheFilmsFrame) {
    record(60);
    auto project = plainProject({fragment(1, 2, 2), fragment(0, 1, 1, 1)});
    EditPayload& edit = project.versions[0].edit;
    edit.padding = 0.1;
    edit.cornerRadius = 0.03;
    edit.shadowIntensity = 0.6;
    edit.zoomKeyframes = {{m_ids.next(), EditTime(0), 0_s, 1, ZoomTransitionType::Smooth, false},
                          {m_ids.next(), EditTime(0.5), 0.4_s, 2, ZoomTransitionType::Smooth, false}};
    edit.maskKeyframes = {{m_ids.next(), EditTime(0.2), EditTime(0.8), {0.5, 0.5, 0.3, 0.3}, 12}};
    show(project);

    // When the film is rendered in its order, and stills are read in another.
    const auto movies = FilmMovies::open(project, m_readers, {});
    ASSERT_TRUE(movies);
    const auto film = makeFilm(project, *movies, {kTestSize, kRecordingRate}, {});
    ASSERT_TRUE(film);
    std::vector<Image> frames;
    Compositor compositor(film->instruction, Subsampling::None);
    const auto keep = [&](std::int64_t, const ComposedFrame& frame) -> Result<void, ExportError> {
        frames.push_back(imageOf(frame.picture));
        return {};
    };
    ASSERT_TRUE(renderPart(*film, {0, film->frameCount()}, {*movies->recording, nullptr, {}}, compositor, keep, {}));
    ASSERT_EQ(frames.size(), 45U);
    for (int i = 0; i < 15; ++i) {
        const int number = i * 17 % 45;
        for (const double into : {0.0, 0.99}) {
            const auto frame = m_reader.readRendered(EditTime((number + into) / kRecordingRate), kLongEdge);
            EXPECT_TRUE(imageIn(frame) == frames[static_cast<std::size_t>(number)]) << number << " + " << into;
        }
    }
    EXPECT_TRUE(imageIn(m_reader.readRendered(EditTime(1.5), kLongEdge)) == frames[44]) << "the film's very end";
}

TEST_F(ProjectFrameReaderTest, OnlyWhatHasChangedIsReadAgain) {
    record(30);
    const auto at = [&](double t) { return numberIn(imageIn(m_reader.readRendered(EditTime(t), kLongEdge))); };
    show(plainProject({fragment(0, 1)}));
    EXPECT_EQ(at(0.51), 15);
    EXPECT_EQ(at(0.21), 6);
    EXPECT_EQ(numberIn(imageIn(m_reader.read(0.51, Source, kLongEdge))), 15);
    show(plainProject({fragment(0.5, 1)}));
    EXPECT_EQ(at(0.01), 15) << "the edit is another one";
    EXPECT_EQ(m_counting.opened, 1) << "the movie is the same";
    std::filesystem::remove(m_bundle / "recording.mov");
    record({0, 0.5}, 1);
    show(plainProject({fragment(0, 1)}));
    EXPECT_EQ(at(0.9), 1);
    EXPECT_EQ(m_counting.opened, 2);
}

TEST(StillPicture, IsMadeSmallerWithoutMovingAnything) {
    for (const auto& [size, limit, wanted] : {std::tuple{PixelSize{1920, 1080}, 1536, PixelSize{1536, 864}},
                                              {PixelSize{1080, 1920}, 1536, PixelSize{864, 1536}},
                                              {PixelSize{1536, 10}, 1536, PixelSize{1536, 10}},
                                              {PixelSize{3440, 1440}, 1536, PixelSize{1536, 643}},
                                              {PixelSize{16384, 2}, 1536, PixelSize{1536, 1}},
                                              {PixelSize{320, 176}, 1536, PixelSize{320, 176}}})
        EXPECT_EQ(sizeWithin(size, limit), wanted) << size.width;

    // Ramps stay ramps: luma's samples lie in the pixels' middles, chroma's of 4:2:0 level with the left one of two.
    const PixelSize size{400, 240};
    for (const Subsampling subsampling : {Subsampling::Quarter, Subsampling::None}) {
        Picture ramp(size, subsampling);
        for (int p = 0; p < 3; ++p) {
            const auto plane = ramp.plane(p);
            const bool isHalf = plane.width < size.width;
            for (int y = 0; y < plane.height; ++y)
                for (int x = 0; x < plane.width; ++x) {
                    const double pixelX = isHalf ? 2 * x + 0.5 : x + 0.5;
                    const double pixelY = isHalf ? 2 * y + 1 : y + 0.5;
                    plane.row(y)[x] = static_cast<std::uint8_t>(std::lround(40 + 0.2 * pixelX + 0.3 * pixelY));
                }
        }
        for (const PixelSize smaller : {PixelSize{200, 120}, PixelSize{267, 161}, PixelSize{131, 79}}) {
            const Picture made = resized(ramp, smaller);
            ASSERT_EQ(made.size(), smaller);
            ASSERT_EQ(made.subsampling(), Subsampling::None);
            for (int p = 0; p < 3; ++p)
                for (int y = 8; y < smaller.height - 8; ++y)
                    for (int x = 8; x < smaller.width - 8; ++x) {
                        const double pixelX = (x + 0.5) * size.width / smaller.width;
                        const double pixelY = (y + 0.5) * size.height / smaller.height;
                        ASSERT_NEAR(made.plane(p).row(y)[x], 40 + 0.2 * pixelX + 0.3 * pixelY, 1.01) << p;
                    }
        }
    }
}

} // namespace
} // namespace morvelin
