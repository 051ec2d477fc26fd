#include "narration/AudioTracks.h"

#include <algorithm>

namespace morvelin {

namespace {

bool isRecording(const AudioTrackRef& track) { return !track.takeID; }

bool hasTrack(const AudioTrackList& tracks, const UUID& id) {
    return std::ranges::find(tracks, id, &AudioTrackRef::id) != tracks.end();
}

void tickOnly(AudioTrackList& tracks, const std::optional<UUID>& id) {
    for (AudioTrackRef& track : tracks) track.isEnabled = track.id == id;
}

std::optional<std::vector<NarrationPiece>> arrangementOf(const UUID& takeID, const OlderNarrationFields& fields) {
    if (!fields.arrangements) return std::nullopt;
    const auto found = std::ranges::find(*fields.arrangements, takeID, &NarrationArrangement::takeID);
    return found == fields.arrangements->end() ? std::nullopt : std::optional(found->pieces);
}

} // namespace

AudioTrackList defaultAudioTracks() { return {AudioTrackRef::recording()}; }

AudioTrackList adding(const UUID& takeID, TakeHearing hearing, AudioTrackList tracks, IdSource& ids) {
    if (hearing == TakeHearing::Alone) tickOnly(tracks, std::nullopt);
    const bool isTaken = hasTrack(tracks, takeID);
    tracks.insert(tracks.begin(), AudioTrackRef{isTaken ? ids.next() : takeID, takeID, true, {}});
    return tracks;
}

AudioTrackList ensuringRecording(AudioTrackList tracks) {
    const auto first = std::ranges::find_if(tracks, isRecording);
    if (first == tracks.end()) {
        tracks.push_back(AudioTrackRef::recording());
    } else {
        tracks.erase(std::remove_if(first + 1, tracks.end(), isRecording), tracks.end());
    }
    return tracks;
}

AudioTrackList solo(const UUID& trackID, AudioTrackList tracks) {
    if (hasTrack(tracks, trackID)) tickOnly(tracks, trackID);
    return tracks;
}

AudioTrackList removingTake(const UUID& takeID, AudioTrackList tracks) {
    std::erase_if(tracks, [&](const AudioTrackRef& track) { return track.takeID == takeID; });
    return tracks;
}

AudioTrackList tracksFor(const UUID& takeID, std::span<const AudioTrackRef> tracks) {
    AudioTrackList found;
    std::ranges::copy_if(tracks, std::back_inserter(found),
                         [&](const AudioTrackRef& track) { return track.takeID == takeID; });
    return found;
}

AudioTrackList tracksFromOlderFields(const OlderNarrationFields& fields) {
    std::vector<UUID> takeIDs;
    if (fields.takeIDs)
        takeIDs = *fields.takeIDs;
    else if (fields.takeID)
        takeIDs = {*fields.takeID};

    AudioTrackList tracks;
    for (const UUID& takeID : takeIDs)
        if (tracksFor(takeID, tracks).empty()) tracks.push_back({takeID, takeID, true, arrangementOf(takeID, fields)});
    return ensuringRecording(std::move(tracks));
}

AudioTrackList audioTracksOf(const EditPayload& edit) {
    if (edit.audioTracks) return ensuringRecording(*edit.audioTracks);
    return tracksFromOlderFields({edit.narrationTakeID, edit.narrationTakeIDs, edit.narrationArrangements});
}

} // namespace morvelin
