// Replacing a transcript's text by a corrected one. Pure.
#pragma once

#include <optional>
#include <string_view>

#include "core/Transcript.h"
#include "speech/NarrationCaptions.h"

namespace morvelin {

/// The transcript with the words of `text`, spread in proportion over the old words' timings; as many words as before
/// keep their own. Nothing where either has no words.
[[nodiscard]] std::optional<FounderSourceTranscript> corrected(FounderSourceTranscript transcript,
                                                               std::string_view text);

/// What a version's captions become when its project's transcript changes: captions that a person edited are kept.
/// Where no track is heard at all, captions follow the transcript itself. `layers` are those of the version.
[[nodiscard]] NarrationCaptions::Synced captionsAfterTranscriptChange(
    const std::optional<CaptionTrack>& captions, const std::optional<FounderSourceTranscript>& before,
    const std::optional<FounderSourceTranscript>& after, std::span<const AudioStack::Layer> layers,
    std::span<const VideoFragment> fragments, const CaptionMaker& maker);

} // namespace morvelin
