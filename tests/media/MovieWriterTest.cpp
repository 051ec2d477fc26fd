// Takes and exports as files: what was appended is what plays, whatever happens in between.

#include "media/FFmpegMovieWriter.h"

#include <cerrno>
#include <csignal>
#include <fstream>
#include <iterator>
#include <random>
#include <set>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "base/TemporaryFolder.h"
#include "media/ContainerProbe.h"
#include "media/FFmpegMovieReader.h"
#include "media/TestPictures.h"

namespace morvelin {
namespace {

using Container = MovieSettings::Container;
using Pace = MovieSettings::Pace;

MovieSettings takeSettings(const std::filesystem::path& path) {
    return {.path = path,
            .container = Container::FragmentedQuickTime,
            .pace = Pace::RealTime,
            .transfer = MovieSettings::Transfer::SRGB,
            .size = kTestSize,
            .frameRate = 60,
            .bitRate = 2'000'000,
            .keyFrameInterval = 1_s};
}

MovieSettings exportSettings(const std::filesystem::path& path) {
    MovieSettings settings = takeSettings(path);
    settings.container = Container::FastStartMPEG4;
    settings.pace = Pace::Offline;
    settings.transfer = MovieSettings::Transfer::BT709;
    settings.keyFrameInterval = 2_s;
    return settings;
}

std::unique_ptr<MovieWriter> startMovie(const MovieSettings& settings, int threads = 1) {
    auto writer = FFmpegMovieWriterFactory({.threads = threads}).create(settings);
    EXPECT_TRUE(writer) << writer.error().description();
    return std::move(*writer);
}

/// Appends numbered pictures, each with the boxes in which it differs from the one before.
class NumberedFrames {
public:
    Result<void, MovieWriterError> append(MovieWriter& writer, double time) {
        std::vector<PixelBox> changed = drawNumber(m_picture, m_next);
        if (m_next == 0) changed = {whole(m_picture)};
        ++m_next;
        return writer.append(m_picture, Seconds(time), changed);
    }

private:
    Picture m_picture = detailedPicture(kTestSize);
    int m_next = 0;
};

std::unique_ptr<MovieReader> openMovie(const std::filesystem::path& path) {
    auto reader = FFmpegMovieReaderFactory({.threads = 2}).open(path);
    EXPECT_TRUE(reader) << reader.error().description();
    return reader ? std::move(*reader) : nullptr;
}

/// How many frames play, one after the other, each with the number that it was given.
int playableFrames(MovieReader& reader) {
    int count = 0;
    SourceTime time = reader.properties().start;
    while (true) {
        const auto frame = reader.frameAt(time);
        EXPECT_TRUE(frame) << frame.error().description();
        if (!frame || numberIn(*frame->picture) != count) return count;
        ++count;
        if (frame->end >= reader.properties().end) return count;
        time = frame->end;
    }
}

std::string bytesOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(MovieWriter, KeepsEveryFrameItsTimeAndItsDuration) {
    // Bursts, lone frames and a screen that stands still for 10 s; flushes while it does, and before the end. The
    // muxer once moved a lone frame behind a flush to where it had guessed the flushed one to end.
    const std::vector<double> times{0, 1 / 60.0, 2 / 60.0, 0.5, 0.9, 1.3, 1.3 + 1 / 60.0, 11.3, 11.3 + 1 / 60.0, 12.0};
    constexpr double kEnd = 14.5;
    for (const std::set<std::size_t>& flushedAfter :
         {std::set<std::size_t>{}, std::set<std::size_t>{6}, std::set<std::size_t>{1, 2, 6, 8, 9}}) {
        const TemporaryFolder folder;
        const auto path = folder.path() / "take.mov";
        const auto writer = startMovie(takeSettings(path));
        NumberedFrames frames;
        for (std::size_t index = 0; index < times.size(); ++index) {
            ASSERT_TRUE(frames.append(*writer, times[index]));
            if (flushedAfter.contains(index)) {
                ASSERT_TRUE(writer->flush());
                ASSERT_TRUE(writer->flush()) << "nothing new: no fragment without frames";
            }
        }
        ASSERT_TRUE(writer->finish(Seconds(kEnd)));
        EXPECT_EQ(writer->bytesWritten(), static_cast<std::int64_t>(std::filesystem::file_size(path)));

        const std::vector<ProbedPacket> packets = probe(path).packets;
        const std::vector<std::uint32_t> durations = fragmentDurations(path);
        ASSERT_EQ(packets.size(), times.size());
        ASSERT_EQ(durations.size(), times.size());
        for (std::size_t index = 0; index < times.size(); ++index) {
            const double next = index + 1 < times.size() ? times[index + 1] : kEnd;
            EXPECT_NEAR(packets[index].time, times[index], 1e-5) << index;
            EXPECT_NEAR(durations[index] / 90'000.0, next - times[index], 3e-5)
                << index << " with " << flushedAfter.size() << " flushes";
        }
        const auto reader = openMovie(path);
        EXPECT_NEAR(reader->properties().end.value, kEnd, 1e-5);
        EXPECT_EQ(playableFrames(*reader), static_cast<int>(times.size()));
    }
}

TEST(MovieWriter, MakesAKeyFrameEverySecondHoweverFewFramesCome) {
    const TemporaryFolder folder;
    const auto path = folder.path() / "take.mov";
    const auto writer = startMovie(takeSettings(path));
    NumberedFrames frames;
    for (int index = 0; index < 90; ++index) ASSERT_TRUE(frames.append(*writer, index / 60.0));
    for (int index = 0; index < 40; ++index) ASSERT_TRUE(frames.append(*writer, 1.5 + index * 0.3));
    ASSERT_TRUE(writer->finish(14_s));

    double lastKey = 0;
    int keys = 0;
    for (const ProbedPacket& packet : probe(path).packets) {
        if (packet.isKeyFrame) {
            lastKey = packet.time;
            ++keys;
        }
        EXPECT_LT(packet.time - lastKey, 1.0 - 1e-6) << packet.time;
    }
    EXPECT_GE(keys, 11);
    EXPECT_LE(keys, 14);
}

TEST(MovieWriter, ExportHasExactTimesKeyFramesEveryTwoSecondsAndTheSameBytesAgain) {
    const TemporaryFolder folder;
    std::array<std::string, 2> bytes;
    for (std::string& copy : bytes) {
        const auto path = folder.path() / "export.mp4";
        const auto writer = startMovie(exportSettings(path), 2);
        NumberedFrames frames;
        for (int index = 0; index < 300; ++index) ASSERT_TRUE(frames.append(*writer, index / 60.0));
        ASSERT_TRUE(writer->finish(5_s));
        copy = bytesOf(path);
        const ProbedMovie movie = probe(path);
        ASSERT_EQ(movie.packets.size(), 300u);
        for (std::size_t index = 0; index < 300; ++index) {
            EXPECT_NEAR(movie.packets[index].time, static_cast<double>(index) / 60, 1e-9);
            EXPECT_NEAR(movie.packets[index].duration, 1 / 60.0, 1e-9);
            EXPECT_EQ(movie.packets[index].isKeyFrame, index % 120 == 0) << index;
        }
        EXPECT_EQ(movie.profile, 100) << "High";
        EXPECT_EQ(playableFrames(*openMovie(path)), 300);
    }
    EXPECT_EQ(bytes[0], bytes[1]);
    EXPECT_LT(bytes[0].find("moov"), bytes[0].find("mdat")) << "the index comes first";
}

TEST(MovieWriter, SaysItsColoursInTheContainer) {
    const TemporaryFolder folder;
    for (const auto& [settings, transfer] : {std::pair{takeSettings(folder.path() / "a.mov"), "iec61966-2-1"},
                                             std::pair{exportSettings(folder.path() / "b.mp4"), "bt709"}}) {
        const auto writer = startMovie(settings);
        NumberedFrames frames;
        ASSERT_TRUE(frames.append(*writer, 0));
        ASSERT_TRUE(writer->finish(1_s));
        const ProbedMovie movie = probe(settings.path);
        EXPECT_EQ(movie.primaries, "bt709");
        EXPECT_EQ(movie.matrix, "bt709");
        EXPECT_EQ(movie.transfer, transfer);
        EXPECT_EQ(movie.range, "tv");
    }
}

TEST(MovieWriter, MapOfUnchangedBlocksLosesNoChange) {
    // Small boxes anywhere change a detailed picture, with frames in between in which nothing does; now and then all.
    const TemporaryFolder folder;
    for (const auto& [settings, threads] :
         {std::pair{takeSettings(folder.path() / "a.mov"), 1}, std::pair{takeSettings(folder.path() / "b.mov"), 3},
          std::pair{exportSettings(folder.path() / "c.mp4"), 1},
          std::pair{exportSettings(folder.path() / "d.mp4"), 3}}) {
        const auto writer = startMovie(settings, threads);
        std::vector<Picture> drawn;
        Picture picture = detailedPicture(kTestSize);
        std::uint32_t seed = 7;
        const auto random = [&seed](int limit) {
            seed = seed * 1664525 + 1013904223;
            return static_cast<int>((seed >> 8) % static_cast<std::uint32_t>(limit));
        };
        for (int index = 0; index < 150; ++index) {
            std::vector<PixelBox> changed;
            if (index == 0) changed = {whole(picture)};
            for (int count = index == 0 ? 0 : random(4); count > 0; --count) {
                const PixelBox box{2 * random(140), 2 * random(75), 2 + 2 * random(15), 2 + 2 * random(10)};
                fill(picture, box,
                     {static_cast<std::uint8_t>(30 + random(190)), static_cast<std::uint8_t>(80 + random(90)), 128});
                changed.push_back(box);
            }
            ASSERT_TRUE(writer->append(picture, Seconds(index / 60.0), changed));
            Picture copy(kTestSize, Subsampling::Quarter);
            for (int plane = 0; plane < 3; ++plane)
                for (int y = 0; y < copy.plane(plane).height; ++y)
                    std::copy_n(picture.plane(plane).row(y), copy.plane(plane).width, copy.plane(plane).row(y));
            drawn.push_back(std::move(copy));
        }
        ASSERT_TRUE(writer->finish(Seconds(150 / 60.0)));

        const auto reader = openMovie(settings.path);
        for (std::size_t index = 0; index < drawn.size(); ++index) {
            const auto frame = reader->frameAt(SourceTime(static_cast<double>(index) / 60 + 0.001));
            ASSERT_TRUE(frame);
            const PictureDistance coded = distance(*frame->picture, drawn[index]);
            EXPECT_LT(coded.mean, 3.0) << index;
            EXPECT_LT(coded.largest, 60) << index << ": a box was left behind";
        }
    }
}

TEST(MovieWriter, HoldsItsBitRateWhateverTheScreenShows) {
    // Noise all over, 60 times a second: the most that a screen can ask for. Then a still minute, and noise again: the
    // quiet time gives no credit.
    const TemporaryFolder folder;
    MovieSettings settings = takeSettings(folder.path() / "take.mov");
    settings.bitRate = 6'000'000;
    const auto writer = startMovie(settings);
    Picture picture(kTestSize, Subsampling::Quarter);
    std::mt19937 random(9);
    std::int64_t bytesBefore = 0;
    for (const double start : {0.0, 65.0}) {
        for (int index = 0; index < 300; ++index) {
            for (int plane = 0; plane < 3; ++plane)
                for (int y = 0; y < picture.plane(plane).height; ++y)
                    for (int x = 0; x < picture.plane(plane).width; ++x)
                        picture.plane(plane).row(y)[x] = static_cast<std::uint8_t>(64 + (random() & 127));
            ASSERT_TRUE(writer->append(picture, Seconds(start + index / 60.0), std::array{whole(picture)}));
        }
        ASSERT_TRUE(writer->flush());
        const double rate = static_cast<double>(writer->bytesWritten() - bytesBefore) * 8 / 5;
        EXPECT_LT(rate, 1.45 * 6'000'000);
        EXPECT_GT(rate, 0.9 * 6'000'000) << "what is allowed is used";
        bytesBefore = writer->bytesWritten();
    }
    ASSERT_TRUE(writer->finish(70_s));
}

TEST(MovieWriter, KilledTakePlaysToItsLastFlushedFrame) {
    const TemporaryFolder folder;
    const auto path = folder.path() / "take.mov";
    const pid_t child = fork();
    if (child == 0) {
        const auto writer = startMovie(takeSettings(path));
        NumberedFrames frames;
        for (int index = 0; index < 150; ++index) (void)frames.append(*writer, index / 60.0);
        (void)writer->flush();
        for (int index = 0; index < 20; ++index) (void)frames.append(*writer, 7 + index / 60.0);
        std::raise(SIGKILL);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status));

    const auto reader = openMovie(path);
    EXPECT_EQ(playableFrames(*reader), 150);
    EXPECT_NEAR(reader->properties().end.value, 7, 1e-3) << "the frame that stood still lasts until the next one came";
}

TEST(MovieWriter, KilledTakeLosesAtMostTheLastSecondWithoutAnyFlush) {
    const TemporaryFolder folder;
    const auto path = folder.path() / "take.mov";
    for (const auto& [appended, kept] : {std::pair{200, 200 - 61}, std::pair{30, 15}}) {
        const pid_t child = fork();
        if (child == 0) {
            const auto writer = startMovie(takeSettings(path));
            NumberedFrames frames;
            for (int index = 0; index < appended; ++index) (void)frames.append(*writer, index / 60.0);
            std::raise(SIGKILL);
        }
        ASSERT_EQ(waitpid(child, nullptr, 0), child);
        EXPECT_GE(playableFrames(*openMovie(path)), kept) << "of a take that was short, half";
    }
}

TEST(MovieWriter, TakeCutAnywherePlaysItsWholeFrames) {
    const TemporaryFolder folder;
    const auto path = folder.path() / "take.mov";
    const auto writer = startMovie(takeSettings(path));
    NumberedFrames frames;
    for (int index = 0; index < 150; ++index) ASSERT_TRUE(frames.append(*writer, index / 60.0));
    ASSERT_TRUE(writer->finish(2.5_s));

    const std::string bytes = bytesOf(path);
    const std::vector<ProbedPacket> packets = probe(path).packets;
    std::vector<std::size_t> sizes;
    for (std::size_t size = 7; size < bytes.size(); size += bytes.size() / 23) sizes.push_back(size);
    // Inside a fragment's header: the demuxer, which looks for all of them at once, then refused the whole movie.
    for (std::size_t at = bytes.find("moof"); at != std::string::npos; at = bytes.find("moof", at + 1))
        sizes.push_back(at + 100);
    for (const std::size_t size : sizes) {
        std::ofstream(folder.path() / "cut.mov", std::ios::binary) << bytes.substr(0, size);
        const auto reader = FFmpegMovieReaderFactory().open(folder.path() / "cut.mov");
        int whole = 0;
        while (whole + 1 < 150 &&
               packets[static_cast<std::size_t>(whole) + 1].offset <= static_cast<std::int64_t>(size))
            ++whole;
        if (whole == 0) continue;
        ASSERT_TRUE(reader) << size << ": " << reader.error().description();
        EXPECT_GE(playableFrames(**reader), whole) << size;
        EXPECT_EQ(numberIn(*(*reader)->frameAt(0_s)->picture), 0) << "back to the beginning";
    }
}

/// Caps the size of files that this process writes, as a full disk would.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limited{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limited);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    rlimit m_before{};
    void (*m_handler)(int);
};

TEST(MovieWriter, TakeOnAFullDiskStaysPlayableAndSaysWhy) {
    const TemporaryFolder folder;
    const auto path = folder.path() / "take.mov";
    const auto writer = startMovie(takeSettings(path));
    NumberedFrames frames;
    std::optional<MovieWriterError> error;
    int appended = 0;
    {
        const FileSizeLimit limit(60'000);
        for (; appended < 3000 && !error; ++appended)
            if (auto result = frames.append(*writer, appended / 60.0); !result) error = result.error();
        ASSERT_TRUE(error);
        EXPECT_EQ(frames.append(*writer, 100).error().description(), error->description()) << "it stays failed";
        EXPECT_EQ(writer->finish(101_s).error().code, EFBIG);
    }
    EXPECT_EQ(error->kind, MovieWriterError::Kind::WritingFailed);
    EXPECT_EQ(error->code, EFBIG);
    EXPECT_EQ(error->description(), "“take.mov” has reached the largest size that a file may have here.");
    EXPECT_GE(playableFrames(*openMovie(path)), appended - 62);
}

TEST(MovieWriter, ExportOnAFullDiskSaysWhy) {
    const TemporaryFolder folder;
    const auto writer = startMovie(exportSettings(folder.path() / "export.mp4"));
    const FileSizeLimit limit(20'000);
    NumberedFrames frames;
    for (int index = 0; index < 300; ++index) (void)frames.append(*writer, index / 60.0);
    const auto finished = writer->finish(5_s);
    ASSERT_FALSE(finished);
    EXPECT_EQ(finished.error().code, EFBIG);
}

TEST(MovieWriter, SaysWhyAMovieCannotBeStarted) {
    const TemporaryFolder folder;
    std::filesystem::create_symlink("/dev/full", folder.path() / "full.mov");
    MovieSettings odd = takeSettings(folder.path() / "odd.mov");
    odd.size.width = 319;
    struct Case {
        MovieSettings settings;
        MovieWriterError::Kind kind;
        int code;
        std::string words;
    };
    const std::string folderName = (folder.path() / "none").string();
    for (const Case& c :
         {Case{takeSettings(folder.path() / "none" / "a.mov"), MovieWriterError::Kind::CannotCreateFile, ENOENT,
               "“a.mov” could not be created in “" + folderName + "”: No such file or directory."},
          Case{takeSettings(folder.path() / "full.mov"), MovieWriterError::Kind::WritingFailed, ENOSPC,
               "The disk is full, so “full.mov” can't grow any further."},
          Case{odd, MovieWriterError::Kind::NoEncoder, 0,
               "A movie of 319 × 176 at 60 frames and 2000000 bits a second can't be encoded."}}) {
        const auto writer = FFmpegMovieWriterFactory().create(c.settings);
        ASSERT_FALSE(writer) << c.words;
        EXPECT_EQ(writer.error().kind, c.kind);
        EXPECT_EQ(writer.error().code, c.code);
        EXPECT_EQ(writer.error().description(), c.words);
    }
}

} // namespace
} // namespace morvelin
