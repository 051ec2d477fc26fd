// The sound of takes and exports: at its place to the sample, in step with the picture, safe like it.

#include <algorithm>
#include <csignal>
#include <fstream>
#include <iterator>

#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "base/TemporaryFolder.h"
#include "media/ContainerProbe.h"
#include "media/FFmpegMovieReader.h"
#include "media/FFmpegMovieWriter.h"
#include "media/FFmpegSoundReader.h"
#include "media/TestPictures.h"
#include "media/TestSound.h"

namespace morvelin {
namespace {

using Container = MovieSettings::Container;
using Pace = MovieSettings::Pace;

MovieSettings settingsFor(Container container, const std::filesystem::path& path, std::size_t tracks) {
    MovieSettings settings{.path = path, .container = container, .size = kTestSize, .bitRate = 2'000'000};
    settings.soundTracks.resize(tracks);
    if (container == Container::FragmentedQuickTime) {
        settings.pace = Pace::RealTime;
        settings.keyFrameInterval = 1_s;
    }
    return settings;
}

/// A movie that is being written, its pictures and its sound side by side.
class SoundMovie {
public:
    explicit SoundMovie(const MovieSettings& settings) : m_tracks(settings.soundTracks.size()) {
        auto made = FFmpegMovieWriterFactory({.threads = 1}).create(settings);
        EXPECT_TRUE(made) << made.error().description();
        writer = std::move(*made);
    }

    void picture(double time) {
        ASSERT_TRUE(writer->append(m_picture, Seconds(time), std::array{whole(m_picture)})) << time;
    }
    /// Rising tones up to `end`, each track's with a phase of its own, in pieces of an odd length.
    void soundUntil(double end) {
        for (std::size_t track = 0; track < m_tracks; ++track) {
            const auto tone = risingTone(end, static_cast<double>(track));
            for (std::size_t from = m_samples; from < tone.size(); from += 2 * 441)
                ASSERT_TRUE(writer->appendSound(
                    track, std::span(tone).subspan(from, std::min<std::size_t>(2 * 441, tone.size() - from))));
        }
        m_samples = 2 * static_cast<std::size_t>(soundSamples(Seconds(end)));
    }

    std::unique_ptr<MovieWriter> writer;

private:
    std::size_t m_tracks;
    std::size_t m_samples = 0;
    Picture m_picture = detailedPicture(kTestSize);
};

/// The tone that the track was given is where it was put, to the sample, up to `end`.
void expectTone(const std::filesystem::path& path, std::size_t track, double end) {
    const auto wanted = leftOf(risingTone(end, static_cast<double>(track)));
    const auto got = decodedSound(path, static_cast<int>(track));
    const auto length = static_cast<std::int64_t>(std::min(wanted.size(), got.size()));
    ASSERT_GT(length, 30'000);
    for (std::int64_t from = 0; from + 20'000 <= length; from += std::max<std::int64_t>(20'000, length / 4)) {
        EXPECT_EQ(lagOf(wanted, got, from, from + 4000), 0) << path << " at sample " << from;
        EXPECT_LT(noiseAt(wanted, got, 0, from, from + 20'000), 0.002) << path << " at sample " << from;
    }
}

TEST(MovieSound, IsInItsPlaceToTheSampleAndEndsWithThePicture) {
    struct Case {
        const char* what;
        Container container;
        std::size_t tracks;
        double soundEnd; ///< the picture's is 3.5
        bool soundComesFirst;
    };
    for (const Case& c : {Case{"export", Container::FastStartMPEG4, 1, 3.5, false},
                          {"its sound is given at once", Container::FastStartMPEG4, 1, 3.5, true},
                          {"longer than its picture", Container::FastStartMPEG4, 1, 5, true},
                          {"take", Container::FragmentedQuickTime, 2, 3.5, false},
                          {"its sound runs ahead", Container::FragmentedQuickTime, 2, 6.2, true},
                          {"its sound ends early", Container::FragmentedQuickTime, 1, 2.25, false}}) {
        const TemporaryFolder folder;
        const auto path = folder.path() / "movie.mov";
        SoundMovie movie(settingsFor(c.container, path, c.tracks));
        if (c.soundComesFirst) movie.soundUntil(c.soundEnd);
        for (int index = 0; index < 105; ++index) {
            movie.picture(index / 30.0);
            if (!c.soundComesFirst) movie.soundUntil(std::min(c.soundEnd, (index + 1) / 30.0));
        }
        ASSERT_TRUE(movie.writer->finish(3.5_s)) << c.what;

        const double end = std::min(c.soundEnd, 3.5);
        for (std::size_t track = 0; track < c.tracks; ++track) {
            SCOPED_TRACE(c.what);
            expectTone(path, track, end);
            EXPECT_NEAR(static_cast<double>(decodedSound(path, static_cast<int>(track)).size()), end * kSoundRate, 1024)
                << c.what;
        }
        const auto reader = FFmpegMovieReaderFactory().open(path);
        ASSERT_TRUE(reader) << c.what;
        EXPECT_TRUE((*reader)->properties().hasAudio);
        EXPECT_NEAR((*reader)->properties().start.value, 0, 1e-6) << c.what;
        EXPECT_NEAR((*reader)->properties().end.value, 3.5, 1e-4) << c.what;
    }
}

TEST(MovieSound, GoesOnWhileTheScreenStandsStillAndIsSafe) {
    const TemporaryFolder folder;
    const auto path = folder.path() / "take.mov";
    const pid_t child = fork();
    if (child == 0) {
        SoundMovie movie(settingsFor(Container::FragmentedQuickTime, path, 2));
        for (int index = 0; index < 3; ++index) movie.picture(index / 60.0);
        for (int tenth = 1; tenth <= 80; ++tenth) movie.soundUntil(tenth * 0.1);
        std::raise(SIGKILL);
    }
    ASSERT_EQ(waitpid(child, nullptr, 0), child);
    for (std::size_t track : {0u, 1u}) {
        expectTone(path, track, 6.9);
        EXPECT_GT(decodedSound(path, static_cast<int>(track)).size(), 6.9 * kSoundRate) << "at most 1 s is lost";
    }
    const auto reader = FFmpegMovieReaderFactory().open(path);
    ASSERT_TRUE(reader);
    EXPECT_GT((*reader)->properties().end.value, 6.9) << "the picture stands as long as there is sound";
}

TEST(MovieSound, TakeThatEndsAnywherePlaysItsWholeFragments) {
    const TemporaryFolder folder;
    const auto path = folder.path() / "take.mov";
    SoundMovie movie(settingsFor(Container::FragmentedQuickTime, path, 2));
    for (int index = 0; index < 120; ++index) {
        if (index < 60 || index > 110) movie.picture(index / 30.0);
        movie.soundUntil((index + 1) / 30.0);
    }
    ASSERT_TRUE(movie.writer->finish(4_s));

    std::ifstream file(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    std::int64_t longest = 0;
    std::vector<std::size_t> sizes;
    for (std::size_t size = bytes.find("moof") + 20'000; size < bytes.size(); size += bytes.size() / 11)
        sizes.push_back(size);
    for (std::size_t at = bytes.find("moof", sizes[0]); at != std::string::npos; at = bytes.find("moof", at + 1))
        sizes.push_back(at + 90); // within a fragment's header
    std::ranges::sort(sizes);
    for (const std::size_t size : sizes) {
        const auto cut = folder.path() / "cut.mov";
        std::ofstream(cut, std::ios::binary) << bytes.substr(0, size);
        const auto reader = FFmpegMovieReaderFactory().open(cut);
        ASSERT_TRUE(reader) << size << ": " << reader.error().description();
        const auto track = FFmpegSoundReaderFactory([](std::string_view) {}).open(cut, 1);
        ASSERT_TRUE(track) << size << ": " << track.error().description();
        std::vector<float> sound(8 * kSoundRate);
        (*track)->read(0, sound);
        const auto heard = leftOf(sound);
        const auto silence = std::find_if(heard.rbegin(), heard.rend(), [](float sample) { return sample != 0; });
        const std::int64_t whole = heard.rend() - silence;
        EXPECT_GE(whole, longest) << size;
        longest = whole;
        if (whole < 10'000) continue;
        EXPECT_LT(noiseAt(leftOf(risingTone(4, 1)), heard, 0, 0, whole - 1024), 0.002) << size;
    }
    EXPECT_GT(longest, 3 * kSoundRate);
}

TEST(MovieSound, SamplesThatAreNoneDoNotEndAMovie) {
    const TemporaryFolder folder;
    const auto path = folder.path() / "movie.mp4";
    SoundMovie movie(settingsFor(Container::FastStartMPEG4, path, 1));
    for (int index = 0; index < 30; ++index) movie.picture(index / 30.0);
    std::vector<float> samples = risingTone(1);
    samples[1000] = std::numeric_limits<float>::quiet_NaN();
    samples[2000] = std::numeric_limits<float>::infinity();
    samples[3000] = 1e30F;
    ASSERT_TRUE(movie.writer->appendSound(0, samples));
    ASSERT_TRUE(movie.writer->finish(1_s));
    const auto wanted = leftOf(risingTone(1));
    EXPECT_LT(noiseAt(wanted, decodedSound(path), 0, 8000, 40'000), 0.002);
}

} // namespace
} // namespace morvelin
