#include "agent/SoundDescriptions.h"

#include <algorithm>
#include <span>

#include "core/base/Rounding.h"
#include "narration/AudioTracks.h"

namespace morvelin {

namespace {

/// None only before a version is applied.
std::span<const AudioTrackRef> tracksOf(const Project& project) {
    return project.audioTracks ? std::span<const AudioTrackRef>(*project.audioTracks)
                               : std::span<const AudioTrackRef>();
}

/// Ticked and on a track of the version.
bool isHeard(const NarrationTake& take, std::span<const AudioTrackRef> tracks) {
    return std::ranges::any_of(tracks, [&](const AudioTrackRef& track) {
        return track.isEnabled && track.takeID && *track.takeID == take.id();
    });
}

JSONValue describeTake(const NarrationTake& take, const Project& project) {
    const auto source = take.source.value_or(NarrationTake::Source::Microphone);
    JSONValue record{{"id", take.id().text()},
                     {"take", take.number.value_or(1)},
                     {"source", std::string(json::rawValue(source))},
                     {"created", take.createdAt.text()},
                     {"start", roundedTo3Decimals(take.start())},
                     {"end", roundedTo3Decimals(take.end())},
                     {"duration", roundedTo3Decimals(take.duration)},
                     {"heard", isHeard(take, tracksOf(project))},
                     {"has_word_timings", take.words && !take.words->empty()},
                     {"edit_changed_since", take.isOutdatedFor(project.fragments)}};
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

} // namespace

JSONValue describeTakes(const NarrationLibrary& library, const Project& project) {
    JSONValue list = JSONValue::array();
    for (const NarrationTake& take : library.liveTakes()) list.push_back(describeTake(take, project));
    return list;
}

JSONValue describeAudioTracks(const Project& project, const NarrationLibrary& library) {
    JSONValue list = JSONValue::array();
    for (const AudioTrackRef& track : tracksOf(project)) {
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
