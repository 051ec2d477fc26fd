// How a version's list of audio tracks is edited. Lists are in stack order, the top track first.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "core/AudioTracks.h"
#include "core/ProjectVersion.h"
#include "core/base/Identity.h"

namespace morvelin {

using AudioTrackList = std::vector<AudioTrackRef>;

/// What happens to the other tracks when a take is added.
enum class TakeHearing {
    WithOthers,
    Alone, ///< every other track is unticked
};

/// The recording's own sound alone.
[[nodiscard]] AudioTrackList defaultAudioTracks();

/// With the take on top, ticked. Its track has the take's id, unless another track has that already.
[[nodiscard]] AudioTrackList adding(const UUID& takeID, TakeHearing hearing, AudioTrackList tracks, IdSource& ids);
/// With exactly one track of the recording's own sound: where it is missing it comes to the bottom.
[[nodiscard]] AudioTrackList ensuringRecording(AudioTrackList tracks);
/// The named track is ticked and every other unticked; an unknown id changes nothing.
[[nodiscard]] AudioTrackList solo(const UUID& trackID, AudioTrackList tracks);
/// Without the tracks of a take.
[[nodiscard]] AudioTrackList removingTake(const UUID& takeID, AudioTrackList tracks);
/// The tracks that play a take.
[[nodiscard]] AudioTrackList tracksFor(const UUID& takeID, std::span<const AudioTrackRef> tracks);

/// What versions held before they had a list of tracks.
struct OlderNarrationFields {
    std::optional<UUID> takeID;
    std::optional<std::vector<UUID>> takeIDs; ///< counts before `takeID`
    std::optional<std::vector<NarrationArrangement>> arrangements;
};

/// The list that those fields mean: a track for each take that was ticked, and the recording's own sound below.
[[nodiscard]] AudioTrackList tracksFromOlderFields(const OlderNarrationFields& fields);

/// The tracks of a version, in whichever form it holds them.
[[nodiscard]] AudioTrackList audioTracksOf(const EditPayload& edit);

} // namespace morvelin
