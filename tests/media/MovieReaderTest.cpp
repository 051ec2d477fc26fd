// Reading back: the right frame at every time, from movies of every form, whole or broken.

#include "media/FFmpegMovieReader.h"

#include <array>
#include <fstream>
#include <iterator>
#include <random>

#include <gtest/gtest.h>

#include "base/TemporaryFolder.h"
#include "media/ContainerProbe.h"
#include "media/FFmpegMovieWriter.h"
#include "media/MovieIndex.h"
#include "media/TestPictures.h"

namespace morvelin {
namespace {

std::unique_ptr<MovieReader> openMovie(const std::filesystem::path& path, int threads = 2) {
    auto reader = FFmpegMovieReaderFactory({.threads = threads}).open(path);
    EXPECT_TRUE(reader) << reader.error().description();
    return reader ? std::move(*reader) : nullptr;
}

/// A recording with bursts and pauses.
std::vector<double> recordingTimes(int count) {
    std::vector<double> times;
    double time = 0;
    for (int index = 0; index < count; ++index) {
        times.push_back(time);
        time += index % 50 == 49 ? 1.7 : index % 7 == 6 ? 0.1 : 1 / 60.0;
    }
    return times;
}

void writeRecording(const std::filesystem::path& path, const std::vector<double>& times, double end) {
    auto writer = FFmpegMovieWriterFactory({.threads = 1})
                      .create({.path = path,
                               .container = MovieSettings::Container::FragmentedQuickTime,
                               .pace = MovieSettings::Pace::RealTime,
                               .transfer = MovieSettings::Transfer::SRGB,
                               .size = kTestSize,
                               .frameRate = 60,
                               .bitRate = 2'000'000,
                               .keyFrameInterval = 1_s});
    ASSERT_TRUE(writer);
    Picture picture = detailedPicture(kTestSize);
    for (std::size_t index = 0; index < times.size(); ++index) {
        drawNumber(picture, static_cast<int>(index));
        ASSERT_TRUE((*writer)->append(picture, Seconds(times[index]), std::array{whole(picture)}));
    }
    ASSERT_TRUE((*writer)->finish(Seconds(end)));
}

void expectFrame(MovieReader& reader, double time, std::size_t expected, const std::vector<double>& starts,
                 double end) {
    const auto frame = reader.frameAt(SourceTime(time));
    ASSERT_TRUE(frame) << time << ": " << frame.error().description();
    EXPECT_EQ(numberIn(*frame->picture), static_cast<int>(expected)) << time;
    EXPECT_EQ(frame->number, static_cast<std::int64_t>(expected)) << time;
    EXPECT_NEAR(frame->start.value, starts[expected], 1e-5) << time;
    EXPECT_NEAR(frame->end.value, expected + 1 < starts.size() ? starts[expected + 1] : end, 1e-5) << time;
}

TEST(MovieReader, GivesTheFrameThatShowsAtAnyTimeInAnyOrder) {
    const TemporaryFolder folder;
    const auto path = folder.path() / "recording.mov";
    const std::vector<double> times = recordingTimes(400);
    const double end = times.back() + 3;
    writeRecording(path, times, end);
    for (const int threads : {1, 3}) {
        const auto reader = openMovie(path, threads);
        EXPECT_EQ(reader->properties().size, kTestSize);
        EXPECT_EQ(reader->properties().nominalFrameRate, 60);
        EXPECT_FALSE(reader->properties().hasAudio);
        EXPECT_NEAR(reader->properties().end.value, end, 1e-5);

        expectFrame(*reader, -5, 0, times, end);
        expectFrame(*reader, end + 50, times.size() - 1, times, end);
        for (std::size_t index = 0; index < times.size(); ++index)
            expectFrame(*reader, times[index], index, times, end);
        std::mt19937 random(11);
        for (int jump = 0; jump < 150; ++jump) {
            const std::size_t index = random() % times.size();
            expectFrame(*reader, times[index] + (jump % 2 == 0 ? 0 : 0.008), index, times, end);
            if (index > 0) expectFrame(*reader, times[index] - 1e-4, index - 1, times, end);
        }
    }
}

TEST(MovieReader, IsExactInMoviesWithBFramesOfOtherContainers) {
    std::vector<Picture> pictures;
    std::vector<double> times;
    for (int index = 0; index < 60; ++index) {
        pictures.push_back(detailedPicture(kTestSize));
        drawNumber(pictures.back(), index);
        times.push_back(index / 25.0);
    }
    for (const char* container : {"mp4", "matroska", "mpegts"}) {
        const TemporaryFolder folder;
        const auto path = folder.path() / "foreign";
        writeForeignMovie(path, {.bFrames = 3, .container = container}, pictures);
        const auto reader = openMovie(path);
        ASSERT_TRUE(reader);
        EXPECT_EQ(reader->properties().nominalFrameRate, 25) << container;
        const double shift = reader->properties().start.value; // transport streams do not start at 0
        for (const int number : {0, 1, 2, 30, 31, 5, 59, 58, 12, 11, 24, 0, 47})
            EXPECT_EQ(numberIn(*reader->frameAt(SourceTime(shift + number / 25.0 + 0.01))->picture), number)
                << container;
    }
}

TEST(MovieReader, BringsEveryFormOfVideoToOneForm) {
    struct Case {
        ForeignMovie movie;
        Subsampling subsampling;
        std::array<std::uint8_t, 3> coded; ///< what the movie holds
        std::array<int, 3> expected;       ///< 4:2:0, BT.709, limited range
    };
    // Red 200, green 60, blue 30 in each form.
    for (const Case& c :
         {Case{{.pixelFormat = "yuv420p"}, Subsampling::Quarter, {91, 101, 191}, {91, 101, 191}},
          Case{{.pixelFormat = "yuv444p"}, Subsampling::None, {91, 101, 191}, {91, 101, 191}},
          Case{{.pixelFormat = "yuv420p10le"}, Subsampling::Quarter, {91, 101, 191}, {91, 101, 191}},
          Case{{.pixelFormat = "yuvj420p", .isFullRange = true}, Subsampling::Quarter, {88, 97, 199}, {91, 101, 191}},
          Case{{.pixelFormat = "yuv420p", .matrix = "smpte170m"},
               Subsampling::Quarter,
               {100, 94, 192},
               {91, 101, 191}}}) {
        const TemporaryFolder folder;
        std::vector<Picture> pictures;
        pictures.emplace_back(kTestSize, c.subsampling);
        fill(pictures.back(), whole(pictures.back()), c.coded);
        const auto path = folder.path() / "foreign.mp4";
        writeForeignMovie(path, c.movie, pictures);
        const auto frame = openMovie(path)->frameAt(SourceTime(0));
        ASSERT_TRUE(frame);
        EXPECT_EQ(frame->picture->subsampling(), Subsampling::Quarter);
        for (int plane = 0; plane < 3; ++plane)
            EXPECT_NEAR(frame->picture->plane(plane).row(40)[40], c.expected[static_cast<std::size_t>(plane)], 2)
                << c.movie.pixelFormat << " " << c.movie.matrix << " plane " << plane;
    }
}

TEST(MovieReader, TurnsAMovieThatWasFilmedOnItsSide) {
    for (const int quarterTurns : {1, 2, 3}) {
        const TemporaryFolder folder;
        std::vector<Picture> pictures;
        pictures.emplace_back(kTestSize, Subsampling::Quarter);
        fill(pictures.back(), whole(pictures.back()), {40, 128, 128});
        fill(pictures.back(), {0, 0, 32, 32}, {220, 128, 128}); // the top left corner
        const auto path = folder.path() / "turned.mp4";
        writeForeignMovie(path, {.quarterTurns = quarterTurns}, pictures);
        const auto reader = openMovie(path);
        const PixelSize size = reader->properties().size;
        EXPECT_EQ(size, quarterTurns == 2 ? kTestSize : (PixelSize{kTestSize.height, kTestSize.width}));
        const auto frame = reader->frameAt(SourceTime(0));
        ASSERT_TRUE(frame);
        ASSERT_EQ(frame->picture->size(), size);
        const int x = quarterTurns == 3 ? 8 : size.width - 8;
        const int y = quarterTurns == 1 ? 8 : size.height - 8;
        EXPECT_NEAR(frame->picture->plane(0).row(y)[x], 220, 6) << quarterTurns;
    }
}

TEST(MovieReader, ReportsDamageAndGoesOnBehindIt) {
    const TemporaryFolder folder;
    const auto path = folder.path() / "recording.mov";
    const std::vector<double> times = recordingTimes(300);
    writeRecording(path, times, times.back() + 1);
    const std::vector<ProbedPacket> packets = probe(path).packets;
    {
        std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
        file.seekp(packets[100].offset + 8);
        for (int index = 0; index < 400; ++index) file.put(static_cast<char>(index * 37));
    }
    const auto reader = openMovie(path, 1);
    ASSERT_TRUE(reader);
    std::size_t nextKey = 101;
    while (!packets[nextKey].isKeyFrame) ++nextKey;

    const auto damaged = reader->frameAt(SourceTime(times[nextKey - 1]));
    ASSERT_FALSE(damaged);
    EXPECT_EQ(damaged.error().kind, MovieReaderError::Kind::DecodingFailed);
    EXPECT_TRUE(damaged.error().description().starts_with("“recording.mov” is damaged near "))
        << damaged.error().description();
    EXPECT_EQ(numberIn(*reader->frameAt(SourceTime(times[nextKey]))->picture), static_cast<int>(nextKey));
    EXPECT_EQ(numberIn(*reader->frameAt(SourceTime(times[20]))->picture), 20);
}

TEST(MovieReader, SaysWhyAFileIsNoMovie) {
    const TemporaryFolder folder;
    std::vector<Picture> pictures;
    pictures.push_back(detailedPicture(kTestSize));
    writeForeignMovie(folder.path() / "whole.mp4", {}, pictures);
    std::ifstream whole(folder.path() / "whole.mp4", std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(whole), {}};
    std::ofstream(folder.path() / "cut.mp4", std::ios::binary) << bytes.substr(0, bytes.size() / 2);
    std::ofstream(folder.path() / "empty.mov");
    std::ofstream(folder.path() / "text.mov") << "This is a letter, and no movie at all.";
    // The smallest sound file: a header and eight samples.
    std::ofstream(folder.path() / "sound.wav", std::ios::binary)
        << std::string("RIFF\x34\0\0\0WAVEfmt \x10\0\0\0\1\0\1\0\x40\x1F\0\0\x80\x3E\0\0\2\0\x10\0data\x10\0\0\0", 44)
        << std::string(16, '\1');

    using Kind = MovieReaderError::Kind;
    struct Case {
        const char* name;
        Kind kind;
        const char* words;
    };
    for (const Case& c :
         {Case{"none.mov", Kind::CannotOpen, "“none.mov” could not be opened: No such file or directory."},
          Case{"cut.mp4", Kind::CannotOpen, "“cut.mp4” is no movie, or it is cut off before its index."},
          Case{"empty.mov", Kind::CannotOpen, "“empty.mov” is no movie, or it is cut off before its index."},
          Case{"text.mov", Kind::CannotOpen, "“text.mov” is no movie, or it is cut off before its index."},
          Case{"sound.wav", Kind::NoVideoTrack, "“sound.wav” has no video track."}}) {
        const auto reader = FFmpegMovieReaderFactory().open(folder.path() / c.name);
        ASSERT_FALSE(reader) << c.name;
        EXPECT_EQ(reader.error().kind, c.kind) << c.name;
        EXPECT_EQ(reader.error().description(), c.words);
    }
}

TEST(NominalFrameRate, IsThatOfTheFastestStretches) {
    const auto steady = [](double rate, double tick) {
        std::vector<double> starts;
        for (int index = 0; index < 200; ++index) starts.push_back(std::round(index / rate / tick) * tick);
        return starts;
    };
    std::vector<double> webcam;
    for (int index = 0; index < 200; ++index) webcam.push_back(index / 30.0 + 0.004 * ((index * 7) % 5 - 2));
    std::vector<double> typing; // a letter now and then, painted in two steps of the screen
    for (int index = 0; index < 200; ++index) typing.push_back(index / 2 * 0.21 + index % 2 / 60.0);
    std::vector<double> stillScreen; // something changes every few seconds
    for (int index = 0; index < 30; ++index) stillScreen.push_back(index * 2.0 + index * index % 7 * 0.2);
    struct Case {
        const char* name;
        std::vector<double> starts;
        double rate;
        double tolerance;
    };
    for (const Case& c : {Case{"film", steady(30, 1 / 90000.0), 30, 0},
                          Case{"television", steady(30 / 1.001, 1 / 90000.0), 30 / 1.001, 1e-9},
                          Case{"milliseconds", steady(24 / 1.001, 0.001), 24 / 1.001, 1e-9},
                          Case{"unusual", steady(37.3, 1 / 90000.0), 37.3, 0.01}, Case{"webcam", webcam, 30, 0.2},
                          Case{"bursts", recordingTimes(200), 60, 0}, Case{"one", {0.0}, 0, 0}, Case{"none", {}, 0, 0},
                          Case{"two", {0.0, 0.2}, 60, 0}, Case{"slow", steady(1, 0.001), 1, 0},
                          Case{"still screen", stillScreen, 60, 0}})
        EXPECT_NEAR(nominalFrameRate(c.starts), c.rate, c.tolerance) << c.name;
    EXPECT_LE(nominalFrameRate(typing), 60);
}

} // namespace
} // namespace morvelin
