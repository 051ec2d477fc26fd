// A film's sound as it is heard: cuts, moves, speeds and takes, against the sources' own samples.
#include "render/SoundMix.h"

#include <random>

#include "media/TestSound.h"
#include "narration/AudioTracks.h"
#include "render/ExportFixture.h"
#include "render/ProjectFilm.h"
#include "render/ProjectSound.h"

namespace morvelin {
namespace {

using testing::ElementsAre;
using Segment = AudioTrack::Segment;

TEST(SoundPieces, FadeOnlyWhereSoundIsCut) {
    const auto segment = [](double start, double end, double from, double speed = 1) {
        return Segment{EditTime(start), EditTime(end), SourceTime(from), SourceTime(from + (end - start) * speed),
                       speed};
    };
    const auto piece = [](std::int64_t start, std::int64_t end, std::int64_t from, double speed, bool in, bool out) {
        return SoundPiece{start, end, from, std::llround(static_cast<double>(end - start) * speed), speed, in, out};
    };
    struct Case {
        const char* what;
        std::vector<Segment> segments;
        std::vector<SoundPiece> pieces;
    };
    for (const Case& c : {Case{"one", {segment(1, 2, 5)}, {piece(44100, 88200, 220500, 1, true, true)}},
                          {"split where nothing is cut",
                           {segment(0, 1.00001, 5), segment(1.00001, 2, 6.00001)},
                           {piece(0, 88200, 220500, 1, true, true)}},
                          {"cut",
                           {segment(0, 1, 5), segment(1, 2, 7)},
                           {piece(0, 44100, 220500, 1, true, true), piece(44100, 88200, 308700, 1, true, true)}},
                          {"goes on in the file, but not in the film",
                           {segment(0, 1, 5), segment(1.5, 2.5, 6)},
                           {piece(0, 44100, 220500, 1, true, true), piece(66150, 110250, 264600, 1, true, true)}},
                          {"faster, then as before",
                           {segment(0, 1, 5), segment(1, 2, 6, 2), segment(2, 3, 8)},
                           {piece(0, 44100, 220500, 1, true, false), piece(44100, 88200, 264600, 2, false, true),
                            piece(88200, 132300, 352800, 1, true, true)}},
                          {"a fast stretch that was split",
                           {segment(0, 1, 5, 4), segment(1, 2, 9, 4)},
                           {piece(0, 88200, 220500, 4, true, true)}},
                          {"over the film's end",
                           {segment(2.5, 4, 5), segment(4, 5, 1)},
                           {{110250, 132300, 220500, 66150, 1, true, true}}}})
        EXPECT_EQ(soundPieces(c.segments, 3 * kSoundRate), c.pieces) << c.what;
}

TEST(SoundPieces, ManyJointsThatAreALittleOffDoNotAddUp) {
    std::vector<Segment> segments;
    for (int i = 0; i < 100; ++i)
        segments.push_back({EditTime(i), EditTime(i + 1), SourceTime(i * 1.00001), SourceTime(i * 1.00001 + 1), 1});
    for (const SoundPiece& piece : soundPieces(segments, 100 * kSoundRate)) {
        const double wanted = static_cast<double>(piece.end - kSoundRate) / kSoundRate * 1.00001 * kSoundRate;
        EXPECT_NEAR(static_cast<double>(piece.sourceStart + piece.length() - kSoundRate), wanted, 2);
    }
}

class SoundMixTest : public ExportFixture {
protected:
    /// A take's file and its entry in the library. Its sound is a rising tone of this phase.
    NarrationTake addTake(double seconds, double phase) {
        NarrationTake take;
        take.storedID = m_ids.next();
        take.duration = Seconds(seconds);
        const auto file = take.fileURL(m_bundle);
        std::filesystem::create_directories(file.parent_path());
        writeWave(file, kSoundRate, 2, risingTone(seconds, phase));
        m_takes.push_back(take);
        return take;
    }
    /// A recording of so many seconds; its tracks of sound are rising tones of phases 0, 1 ..., each this loud.
    void recordWithSound(double seconds, std::size_t tracks, float loudness = 1) {
        MovieSettings settings{.path = m_bundle / "recording.mov",
                               .container = MovieSettings::Container::FragmentedQuickTime,
                               .pace = MovieSettings::Pace::RealTime,
                               .size = kTestSize,
                               .frameRate = kRecordingRate,
                               .bitRate = 4'000'000};
        settings.soundTracks.resize(tracks, {256'000});
        const auto writer = m_writers.create(settings);
        ASSERT_TRUE(writer);
        Picture picture = detailedPicture(kTestSize);
        for (int i = 0; i < static_cast<int>(seconds * kRecordingRate); ++i)
            ASSERT_TRUE((*writer)->append(picture, Seconds(i / kRecordingRate), std::array{whole(picture)}));
        for (std::size_t track = 0; track < tracks; ++track) {
            auto tone = risingTone(seconds, static_cast<double>(track));
            for (float& sample : tone) sample *= loudness;
            ASSERT_TRUE((*writer)->appendSound(track, tone));
        }
        ASSERT_TRUE((*writer)->finish(Seconds(seconds)));
    }
    std::unique_ptr<SoundMix> mixOf(const ProjectBundle::Contents& project) {
        if (!m_takes.empty()) {
            NarrationLibrary library;
            library.takes = m_takes;
            EXPECT_TRUE(library.save(m_bundle));
        }
        const Log noLog = [](std::string_view) {};
        const auto movies = FilmMovies::open(project, m_readers, noLog);
        EXPECT_TRUE(movies);
        const auto film = makeFilm(project, *movies, {kTestSize, kRecordingRate, FilmStyle::Plain, LostEnd::Kept},
                                   noLog);
        EXPECT_TRUE(film);
        return openSound(project, *film, m_soundReaders, noLog);
    }
    /// The whole mix, left channel, read in pieces of odd lengths.
    std::vector<float> heard(SoundMix& mix) {
        std::vector<float> samples;
        std::mt19937 random(2);
        while (mix.position() < mix.length()) {
            const auto rest = static_cast<std::size_t>(mix.length() - mix.position());
            std::vector<float> part(2 * std::min<std::size_t>(1 + random() % 5000, rest));
            mix.read(part);
            samples.insert(samples.end(), part.begin(), part.end());
        }
        return leftOf(samples);
    }

    std::vector<NarrationTake> m_takes;
};

/// How loud the difference is between what was heard from `time` on and a tone from `from` on.
double distanceFrom(const std::vector<float>& heard, double time, double length, double phase, double from) {
    const auto tone = leftOf(risingTone(from + length + 1, phase));
    double worst = 0;
    for (std::int64_t i = 0; i < soundSamples(Seconds(length)); ++i) {
        const float sample = heard[static_cast<std::size_t>(soundSamples(Seconds(time)) + i)];
        worst = std::max(worst, std::abs(static_cast<double>(sample) -
                                         tone[static_cast<std::size_t>(soundSamples(Seconds(from)) + i)]));
    }
    return worst;
}

TEST_F(SoundMixTest, EveryPieceIsInItsPlaceToTheSample) {
    record(240);
    const NarrationTake upper = addTake(3, 1);
    const NarrationTake lower = addTake(6, 2);
    auto project = plainProject({fragment(0, 8)});
    const auto track = [](const NarrationTake& take, std::vector<NarrationPiece> pieces) {
        AudioTrackRef ref;
        ref.id = take.id();
        ref.takeID = take.id();
        ref.pieces = std::move(pieces);
        return ref;
    };
    const auto piece = [this](double from, double to, double at) {
        return NarrationPiece{m_ids.next(), Seconds(from), Seconds(to), EditTime(at)};
    };
    // The upper take was cut, and its second part moved before the first; the lower is heard where the upper is silent.
    project.versions[0].edit.audioTracks = AudioTrackList{track(upper, {piece(0, 1, 4), piece(1, 2.5, 1)}),
                                                          track(lower, {piece(0, 6, 0.5)})};
    const auto mix = mixOf(project);
    ASSERT_TRUE(mix);
    EXPECT_EQ(mix->length(), 8 * kSoundRate);
    const auto all = heard(*mix);
    constexpr double kFade = 0.002;
    struct Part {
        double time, length, phase, from;
    };
    for (const Part& part : {Part{0.5, 0.5, 2, 0}, {1, 1.5, 1, 1}, {2.5, 1.5, 2, 2}, {4, 1, 1, 0}, {5, 1.5, 2, 4.5}})
        EXPECT_LT(distanceFrom(all, part.time + kFade, part.length - 2 * kFade, part.phase, part.from + kFade), 1e-4)
            << "at " << part.time;
    for (const double silent : {0.0, 6.5})
        for (std::int64_t i = soundSamples(Seconds(silent)); i < soundSamples(Seconds(silent + 0.49)); ++i)
            ASSERT_EQ(all[static_cast<std::size_t>(i)], 0) << "at " << silent;
    // Seams in mid-wave do not jump: each side is silent there.
    for (const double seam : {0.5, 1.0, 2.5, 4.0, 5.0, 6.5})
        for (const std::int64_t side : {-1, 0})
            EXPECT_LT(std::abs(all[static_cast<std::size_t>(soundSamples(Seconds(seam)) + side)]), 1e-3) << seam;
}

TEST_F(SoundMixTest, RecordingIsHeardWithItsPicturesWhateverItsSpeed) {
    recordWithSound(12, 1);
    auto project = plainProject({fragment(1, 3, 1, 0), fragment(3, 4, 1, 1), fragment(6, 8, 2, 2),
                                 fragment(8, 9, 0.5, 3), fragment(10, 11, 1, 4)});
    const auto mix = mixOf(project);
    ASSERT_TRUE(mix);
    ASSERT_EQ(mix->length(), 7 * kSoundRate);
    const auto all = heard(*mix);
    constexpr double kCoding = 0.05;
    EXPECT_LT(distanceFrom(all, 0.01, 2.98, 0, 1.01), kCoding) << "over the joint where nothing is cut too";
    EXPECT_LT(distanceFrom(all, 6.01, 0.98, 0, 10.01), kCoding) << "what follows other speeds is in its place again";
    // The tone rises by 3,800 Hz in a second, so its pitch tells which moment of the recording is heard.
    const auto pitchAt = [&](double time) {
        int crossings = 0;
        const std::int64_t middle = soundSamples(Seconds(time));
        for (std::int64_t i = middle - 441; i < middle + 441; ++i)
            crossings += all[static_cast<std::size_t>(i - 1)] < 0 && all[static_cast<std::size_t>(i)] >= 0 ? 1 : 0;
        return crossings * 50.0;
    };
    for (const double t : {0.2, 0.4, 0.6, 0.8}) {
        EXPECT_NEAR(pitchAt(3 + t / 2), 200 + 3800 * t, 200) << "speed 2 at " << t;
        EXPECT_NEAR(pitchAt(4 + t * 2), 200 + 3800 * t, 200) << "speed 0.5 at " << t;
    }
}

TEST_F(SoundMixTest, BothTracksOfARecordingAreHeardAndTheirSumIsLimited) {
    recordWithSound(3, 2, 1.9F); // each reaches 0.95
    const auto mix = mixOf(plainProject({fragment(0, 3)}));
    ASSERT_TRUE(mix);
    const auto all = heard(*mix);
    const auto first = leftOf(risingTone(3, 0));
    const auto second = leftOf(risingTone(3, 1));
    double loudest = 0;
    for (std::size_t i = 2000; i < all.size() - 2000; ++i) {
        const float sum = std::clamp(1.9F * (first[i] + second[i]), -1.0F, 1.0F);
        ASSERT_NEAR(all[i], sum, 0.12) << i;
        loudest = std::max(loudest, std::abs(static_cast<double>(all[i])));
    }
    EXPECT_EQ(loudest, 1);
}

TEST_F(SoundMixTest, ExportedMovieHoldsItAndIsNoLongerThanItsPicture) {
    recordWithSound(11, 1);
    const auto project = plainProject({fragment(0, 2), fragment(4.5, 7, 1, 1), fragment(7, 10, 2, 2)});
    const auto files = run(project, to("Film.mp4"));
    ASSERT_TRUE(files) << files.error().description();
    const auto mixed = heard(*mixOf(project));
    const auto reader = m_soundReaders.open(files->video, 0);
    ASSERT_TRUE(reader);
    EXPECT_NEAR((*reader)->span().end.value, 6, 0.002);
    std::vector<float> samples(6 * 2 * kSoundRate);
    (*reader)->read(0, samples);
    const auto length = static_cast<std::int64_t>(mixed.size());
    EXPECT_LT(noiseAt(mixed, leftOf(samples), 0, 0, length), 0.01);
    EXPECT_EQ(lagOf(mixed, leftOf(samples), 130'000, 132'000), 0);
    EXPECT_FALSE(m_soundReaders.open(files->video, 1)) << "one track";
}

TEST_F(SoundMixTest, NothingToHearIsNoTrackAtAll) {
    recordWithSound(2, 1);
    auto project = plainProject({fragment(0, 2)});
    EXPECT_TRUE(mixOf(project));
    project.versions[0].edit.audioTracks = AudioTrackList{
        {.id = AudioTrackRef::kRecordingID, .takeID = {}, .isEnabled = false, .pieces = {}}};
    EXPECT_FALSE(mixOf(project)) << "unticked";
    const auto files = run(project, to("Silent.mp4"));
    ASSERT_TRUE(files);
    EXPECT_FALSE(open(files->video)->properties().hasAudio);
    record(60);
    EXPECT_FALSE(mixOf(plainProject({fragment(0, 2)}))) << "a recording without sound";
}

} // namespace
} // namespace morvelin
