// The edits of a version's list of tracks, and what older versions' fields mean.

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "narration/AudioTracks.h"

namespace morvelin {
namespace {

UUID id(std::uint8_t number) {
    UUID made;
    made.bytes[0] = number;
    return made;
}

/// "2 (r)" is take 2 over the recording, which is unticked; a star marks a track whose id isn't its take's.
std::string text(const AudioTrackList& tracks) {
    std::string all;
    for (const AudioTrackRef& track : tracks) {
        const std::string take = track.takeID ? std::to_string(track.takeID->bytes[0]) : "r";
        const char* star = track.id == track.takeID.value_or(AudioTrackRef::kRecordingID) ? "" : "*";
        const std::string pieces = track.pieces ? fmt::format("/{}", track.pieces->size()) : "";
        if (!all.empty()) all += ' ';
        all += fmt::format(fmt::runtime(track.isEnabled ? "{}{}{}" : "({}{}{})"), take, star, pieces);
    }
    return all;
}

TEST(AudioTracks, ATakeComesOnTop) {
    SeededIdSource ids(1);
    AudioTrackList tracks = adding(id(1), TakeHearing::WithOthers, defaultAudioTracks(), ids);
    EXPECT_EQ(text(tracks), "1 r");
    tracks = adding(id(2), TakeHearing::Alone, tracks, ids);
    EXPECT_EQ(text(tracks), "2 (1) (r)");
    EXPECT_EQ(text(adding(id(1), TakeHearing::WithOthers, tracks, ids)), "1* 2 (1) (r)")
        << "a second track of a take has an id of its own";
}

TEST(AudioTracks, AreTickedSearchedAndRemoved) {
    SeededIdSource ids(1);
    AudioTrackList tracks = adding(id(1), TakeHearing::WithOthers, defaultAudioTracks(), ids);
    tracks = adding(id(2), TakeHearing::WithOthers, tracks, ids);
    EXPECT_EQ(text(solo(id(1), tracks)), "(2) 1 (r)");
    EXPECT_EQ(text(solo(AudioTrackRef::kRecordingID, tracks)), "(2) (1) r");
    EXPECT_EQ(text(solo(id(9), tracks)), "2 1 r") << "an unknown track must not silence all others";
    tracks = adding(id(1), TakeHearing::WithOthers, tracks, ids);
    EXPECT_EQ(text(tracksFor(id(1), tracks)), "1* 1");
    EXPECT_EQ(text(removingTake(id(1), tracks)), "2 r");
    EXPECT_EQ(text(tracksFor(id(9), tracks)), "");
}

TEST(AudioTracks, HaveTheRecordingOnce) {
    EXPECT_EQ(text(ensuringRecording({})), "r");
    EXPECT_EQ(text(ensuringRecording({{id(1), id(1), false, {}}})), "(1) r");
    EXPECT_EQ(text(ensuringRecording({{id(7), {}, false, {}}, {id(1), id(1), true, {}}, AudioTrackRef::recording()})),
              "(r*) 1");
}

TEST(AudioTracks, OlderFieldsBecomeTracks) {
    const NarrationPiece piece{id(9), 0_s, 1_s, 2_s};
    const std::vector<NarrationArrangement> arrangements{{id(2), {piece, piece}}, {id(5), {piece}}};
    const std::pair<OlderNarrationFields, std::string> cases[] = {
        {{}, "r"},
        {{id(1), {}, {}}, "1 r"},
        {{id(1), std::vector<UUID>{}, {}}, "r"},
        {{id(1), std::vector{id(3), id(2), id(3)}, arrangements}, "3 2/2 r"},
    };
    for (const auto& [fields, expected] : cases) EXPECT_EQ(text(tracksFromOlderFields(fields)), expected);
}

} // namespace
} // namespace morvelin
