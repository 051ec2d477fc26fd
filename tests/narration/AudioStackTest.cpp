// Which tracks are layers, and what is heard where they lie over each other.

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "base/TemporaryFolder.h"
#include "narration/AudioStack.h"
#include "narration/AudioTracks.h"

namespace morvelin::AudioStack {
namespace {

UUID id(int number) { return UUID{{static_cast<std::uint8_t>(number)}}; }

std::string text(const std::vector<Piece>& pieces) {
    std::string all;
    for (const Piece& piece : pieces)
        all += fmt::format("{}{:g}-{:g}@{:g}", all.empty() ? "" : " ", piece.timelineStart.value,
                           piece.timelineEnd.value, piece.sourceStart.value);
    return all;
}

class AudioStackTest : public testing::Test {
protected:
    /// Take `number` plays from `start` for `duration` seconds.
    void addTake(int number, double start, double duration) {
        NarrationTake take;
        take.storedID = id(number);
        take.timelineStart = EditTime(start);
        take.duration = Seconds(duration);
        put(take.fileURL(m_folder.path()), "sound");
        m_takes.push_back(take);
    }
    std::vector<Layer> layersOf(const AudioTrackList& tracks, RecordingSound recording = RecordingSound::Audible) {
        return layers(tracks, {m_fragments, m_takes, m_folder.path(), recording});
    }
    std::vector<std::string> heard(const AudioTrackList& tracks) {
        std::vector<std::string> all;
        for (const auto& pieces : audible(layersOf(tracks))) all.push_back(text(pieces));
        return all;
    }
    static AudioTrackRef track(int take) { return {id(take), id(take), true, {}}; }

    TemporaryFolder m_folder;
    std::vector<NarrationTake> m_takes;
    std::vector<VideoFragment> m_fragments{{id(99), 0_s, 10_s, 1, 0, {}}};
};

TEST_F(AudioStackTest, TheTopTrackPlaysWhereTracksOverlap) {
    addTake(1, 3, 2);
    addTake(2, 0, 8);
    EXPECT_THAT(heard({track(1), track(2), AudioTrackRef::recording()}),
                testing::ElementsAre("3-5@0", "0-3@0 5-8@5", "8-10@8"));
    const auto all = layersOf({track(1), track(2), AudioTrackRef::recording()});
    EXPECT_EQ(covered(all, 2), (std::vector{EditRange{EditTime(0), EditTime(8)}}));
    EXPECT_TRUE(covered(all, 0).empty());
}

TEST_F(AudioStackTest, OnlyTickedTracksWithSoundAreLayers) {
    addTake(1, 8, 5);
    addTake(2, 0, 1);
    AudioTrackRef unticked = track(1);
    AudioTrackRef recording = AudioTrackRef::recording();
    unticked.isEnabled = recording.isEnabled = false;
    EXPECT_TRUE(heard({unticked, recording}).empty());
    EXPECT_THAT(heard({track(1), recording}), testing::ElementsAre("8-10@0")) << "cut at the video's end";
    EXPECT_TRUE(layersOf({AudioTrackRef::recording()}, RecordingSound::Silent).empty());
    EXPECT_THAT(heard({track(7), AudioTrackRef::recording()}), testing::ElementsAre("0-10@0")) << "an unknown take";

    m_takes[0].deletedAt = Date{};
    std::filesystem::remove(m_takes[1].fileURL(m_folder.path()));
    EXPECT_THAT(heard({track(1), track(2), AudioTrackRef::recording()}), testing::ElementsAre("0-10@0"))
        << "a removed take and one whose file has gone cover nothing";
}

TEST_F(AudioStackTest, AVersionsArrangementCountsBeforeTheTakesOwn) {
    addTake(1, 0, 4);
    AudioTrackRef moved = track(1);
    moved.pieces = {{id(12), 2_s, 9_s, EditTime(5)}, {id(11), 0_s, 2_s, EditTime(-1)}};
    const auto all = layersOf({moved});
    ASSERT_EQ(all.size(), 1u);
    EXPECT_EQ(text(all[0].pieces), "0-1@1 5-7@2") << "cut at 0 and at the take's end";
    EXPECT_EQ(all[0].take->arrangement, moved.pieces);
    EXPECT_EQ(all[0].take->trackID, moved.id);
}

TEST_F(AudioStackTest, TheMixNamesOnlyWhatIsHeard) {
    addTake(1, 0, 10);
    const Mix covered = mix(layersOf({track(1), AudioTrackRef::recording()}));
    EXPECT_FALSE(covered.recording);
    ASSERT_EQ(covered.takes.size(), 1u);
    EXPECT_EQ(covered.takes[0].url, m_takes[0].fileURL(m_folder.path()));
    const Mix below = mix(layersOf({AudioTrackRef::recording(), track(1)}));
    EXPECT_EQ(text(below.recording.value()), "0-10@0");
    EXPECT_TRUE(below.takes.empty());
}

TEST_F(AudioStackTest, CaptionsOfTheRecordingGoThroughItsHeardPiecesOnceSoundIsEdited) {
    addTake(1, 0, 4);
    EXPECT_FALSE(heardRecording(layersOf({track(1), AudioTrackRef::recording()}), m_fragments));
    m_fragments[0].audio = FragmentAudio{0_s, {}, SourceTime(6), false};
    EXPECT_EQ(text(heardRecording(layersOf({track(1), AudioTrackRef::recording()}), m_fragments).value()), "4-6@4");
    EXPECT_FALSE(heardRecording(layersOf({track(1)}), m_fragments)) << "no layer tells nothing";
}

} // namespace
} // namespace morvelin::AudioStack
