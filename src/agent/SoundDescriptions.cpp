#include "agent/SoundDescriptions.h"

#include <algorithm>

#include "core/base/Rounding.h"
#include "narration/AudioTracks.h"

namespace morvelin {

namespace {

/// Ticked and on a track of the version.
bool isHeard(const NarrationTake& take, const AudioTrackList& tracks) {
    return std::ranges::any_of(tracks, [&](const AudioTrackRef& track) {
        return track.isEnabled && track.takeID && *track.takeID == take.id();
    });
}

JSONValue describeTake(const NarrationTake& take, const EditPayload& edit, const AudioTrackList& tracks) {
    const auto source = take.source.value_or(NarrationTake::Source::Microphone);
    JSONValue record{{"id", take.id().text()},
                     {"take", take.number.value_or(1)},
                     {"source", std::string(json::rawValue(source))},
                     {"created", take.createdAt.text()},
                     {"start", roundedTo3Decimals(take.start())},
                     {"end", roundedTo3Decimals(take.end())},
                     {"duration", roundedTo3Decimals(take.duration)},
                     {"heard", isHeard(take, tracks)},
                     {"has_word_timings", take.words && !take.words->empty()},
                     {"edit_changed_since", take.isOutdatedFor(edit.fragments)}};
    const auto addIfSet = [&record](const char* name, const std::optional<std::string>& text) {
        if (text) record[name] = *text;
    };
    addIfSet("device", take.deviceName);
    addIfSet("voice", take.voiceName);
    addIfSet("voice_id", take.voiceID);
    addIfSet("model", take.modelID);
    addIfSet("script", take.script);
    return record;
}

JSONValue describePieces(const std::vector<NarrationPiece>& pieces) {
    JSONValue list = JSONValue::array();
    for (const NarrationPiece& piece : pieces)
        list.push_back({{"start", roundedTo3Decimals(piece.timelineStart)},
                        {"end", roundedTo3Decimals(piece.timelineStart + (piece.takeEnd - piece.takeStart))},
                        {"take_start", roundedTo3Decimals(piece.takeStart)}});
    return list;
}

AudioTrackList tracksOf(const EditPayload& edit) {
    if (edit.audioTracks) return ensuringRecording(*edit.audioTracks);
    return tracksFromOlderFields({edit.narrationTakeID, edit.narrationTakeIDs, edit.narrationArrangements});
}

} // namespace

JSONValue describeTakes(const NarrationLibrary& library, const EditPayload& edit) {
    const AudioTrackList tracks = tracksOf(edit);
    JSONValue list = JSONValue::array();
    for (const NarrationTake& take : library.liveTakes()) list.push_back(describeTake(take, edit, tracks));
    return list;
}

JSONValue describeAudioTracks(const EditPayload& edit, const NarrationLibrary& library) {
    JSONValue list = JSONValue::array();
    for (const AudioTrackRef& track : tracksOf(edit)) {
        JSONValue record{{"id", track.id.text()}, {"ticked", track.isEnabled}};
        if (!track.takeID) {
            record["track"] = "original";
        } else if (const NarrationTake* take = library.live(*track.takeID)) {
            record["track"] = "take";
            record["take"] = take->number.value_or(1);
            record["take_id"] = take->id().text();
            record["pieces"] = describePieces(track.pieces.value_or(take->pieces()));
        } else {
            continue; // the track of a removed take is neither heard nor shown
        }
        list.push_back(std::move(record));
    }
    return list;
}

} // namespace morvelin
