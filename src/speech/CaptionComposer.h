// How transcript words become caption lines. Pure but for fresh ids and the date.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "core/Captions.h"
#include "core/base/Date.h"
#include "core/base/Identity.h"

namespace morvelin {

/// Where new records get their ids and dates from. Both outlive the call.
struct CaptionMaker {
    IdSource& ids;
    const WallClock& clock;
};

/// The cues of segments, in order: a line ends with its segment, and before a word that would make it longer than 4 s.
[[nodiscard]] std::vector<CaptionCue> cuesFrom(std::span<const TranscriptSegment> segments, IdSource& ids);

/// A line with the words' text, from the first word's start to the last one's end. There must be a word.
[[nodiscard]] CaptionCue cueOf(std::vector<TranscriptWord> words, IdSource& ids);

/// Sorts the cues, cuts each where the next one starts, and drops those that are left without length.
void normalize(CaptionTrack& track);

/// A normalised track made now.
[[nodiscard]] CaptionTrack newTrack(std::string engine, std::optional<std::string> language,
                                    std::vector<CaptionCue> cues, const CaptionMaker& maker);

/// The captions that follow from a transcript alone.
[[nodiscard]] CaptionTrack trackFrom(const FounderSourceTranscript& transcript, const CaptionMaker& maker);

/// The captions of a project that was just opened: its own, or else those that its transcript gives.
[[nodiscard]] std::optional<CaptionTrack> captionsOnOpening(std::optional<CaptionTrack> captions,
                                                            const std::optional<FounderSourceTranscript>& transcript,
                                                            const CaptionMaker& maker);

} // namespace morvelin
