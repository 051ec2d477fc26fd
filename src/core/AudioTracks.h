// A version's stack of audio tracks: the recording's own sound and the narration takes that are heard.
#pragma once

#include <optional>
#include <vector>

#include "core/base/Identity.h"
#include "core/base/JSON.h"
#include "core/base/Time.h"

namespace morvelin {

/// Plays take time [`takeStart`, `takeEnd`) at `timelineStart`, always at speed 1.
struct NarrationPiece {
    UUID id;
    Seconds takeStart;
    Seconds takeEnd;
    EditTime timelineStart;

    bool operator==(const NarrationPiece&) const = default;
};

template <class Fields>
void describe(Fields& fields, Same<Fields, NarrationPiece>& piece) {
    fields.required("id", piece.id);
    fields.required("takeStart", piece.takeStart);
    fields.required("takeEnd", piece.takeEnd);
    fields.required("timelineStart", piece.timelineStart);
}

/// The older per-version form of a take's division.
struct NarrationArrangement {
    UUID takeID;
    std::vector<NarrationPiece> pieces;

    bool operator==(const NarrationArrangement&) const = default;
};

template <class Fields>
void describe(Fields& fields, Same<Fields, NarrationArrangement>& arrangement) {
    fields.required("takeID", arrangement.takeID);
    fields.required("pieces", arrangement.pieces);
}

/// One track of the stack, top first; without a take it is the recording's own sound.
struct AudioTrackRef {
    /// The recording's track has this id in every project: its bytes spell the word "RECORDING" and then a 1.
    static constexpr UUID kRecordingID{{0x52, 0x45, 0x43, 0x4F, 0x52, 0x44, 0x49, 0x4E, 0x47, 0, 0, 0, 0, 0, 0, 1}};

    UUID id;
    std::optional<UUID> takeID;
    bool isEnabled = true;
    std::optional<std::vector<NarrationPiece>> pieces; ///< absent means the take's default division

    bool operator==(const AudioTrackRef&) const = default;

    [[nodiscard]] static AudioTrackRef recording() { return AudioTrackRef{kRecordingID, {}, true, {}}; }
};

template <class Fields>
void describe(Fields& fields, Same<Fields, AudioTrackRef>& track) {
    fields.required("id", track.id);
    fields.optional("takeID", track.takeID);
    fields.withDefault("isEnabled", track.isEnabled, true);
    fields.optional("pieces", track.pieces);
}

} // namespace morvelin
