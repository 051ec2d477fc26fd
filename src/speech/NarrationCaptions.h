// One caption track from all tracks that are heard, and what becomes of a version's captions when those change.
// Pure, but for asking the disk whether takes' files are there.
#pragma once

#include <optional>
#include <span>

#include "core/Captions.h"
#include "narration/AudioStack.h"
#include "narration/AudioTracks.h"
#include "speech/CaptionComposer.h"

namespace morvelin {

/// What became of the captions.
enum class NarrationCaptionOutcome { Written, KeptEdited, NoTimings };

constexpr auto rawValues(std::type_identity<NarrationCaptionOutcome>) {
    using enum NarrationCaptionOutcome;
    return std::to_array<std::pair<NarrationCaptionOutcome, std::string_view>>(
        {{Written, "written"}, {KeptEdited, "kept_edited"}, {NoTimings, "no_timings"}});
}

} // namespace morvelin

namespace morvelin::NarrationCaptions {

struct Composition {
    std::optional<CaptionTrack> track;
    std::optional<FounderSourceTranscript> transcript; ///< of all that is heard, in the recording's time
    bool isComplete = true;                            ///< false where the words of something heard are unknown
};

/// Captions of what is heard of each layer. The recording's words are left out where takes or moved sound cover them,
/// and not where the edit cuts them: output does that, so that a cut never makes captions look edited.
[[nodiscard]] Composition compose(std::span<const AudioStack::Layer> layers, std::span<const VideoFragment> fragments,
                                  const std::optional<FounderSourceTranscript>& transcript, const CaptionMaker& maker);

/// Whether captions show the same texts at the same times, to the millisecond.
[[nodiscard]] bool isSame(const CaptionTrack& a, const CaptionTrack& b);
/// Whether a person changed the captions: they differ from what the audio gives.
[[nodiscard]] bool isEdited(const std::optional<CaptionTrack>& existing, const std::optional<CaptionTrack>& composed);

enum class EditedCaptions { Keep, Replace };

/// A version's captions after what is heard has changed.
struct Synced {
    NarrationCaptionOutcome outcome = NarrationCaptionOutcome::Written;
    bool predate = false; ///< the captions are not those of what is heard now: `captionsPredateTake`
    std::optional<CaptionTrack> captions;
};

/// The captions when what they should follow goes from one composition to another.
[[nodiscard]] Synced follow(const std::optional<CaptionTrack>& existing, const Composition& earlier,
                            const Composition& later, EditedCaptions edited);

/// What `sync` looks at. For a take that is being removed `edit.takes` still holds it as it was.
struct TrackChange {
    std::span<const AudioTrackRef> before;
    std::span<const AudioTrackRef> after;
    AudioStack::Edit edit;
    const std::optional<CaptionTrack>& captions;
    const std::optional<FounderSourceTranscript>& transcript;
};

/// The captions after a take was added, ticked, moved or removed.
[[nodiscard]] Synced sync(const TrackChange& change, EditedCaptions edited, const CaptionMaker& maker);

} // namespace morvelin::NarrationCaptions
