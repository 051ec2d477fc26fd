// The words of a take as captions need them: in the recording's time, and in the lines of their script. Pure functions.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "core/Transcript.h"
#include "narration/AudioLayout.h"
#include "narration/NarrationTake.h"
#include "timeline/FragmentMap.h"

namespace morvelin::NarrationCaptions {

/// What the recording shows during a span of the timeline: from what its start shows to what its end shows. Nothing
/// where an end lies outside the edit.
[[nodiscard]] std::optional<AudioLayout::Range<SourceTime>> recordedSpan(const FragmentMap& map, EditTime from,
                                                                         EditTime to);

/// One segment for each line of the script that a generated take was made from, the words dealt out in order. Nothing
/// for other takes, and where the script has another number of words.
[[nodiscard]] std::optional<std::vector<TranscriptSegment>> segments(const NarrationTake& take,
                                                                     std::span<const TranscriptWord> words);

/// What is heard of a take, in the recording's time: by its script's lines, or else grouped anew.
struct HeardWords {
    std::vector<TranscriptSegment> segments;
    bool areScriptLines = false;
};

/// `heard` are the pieces of the take's layer that no other covers.
[[nodiscard]] HeardWords heardWords(const NarrationTake& take, std::span<const AudioLayout::Piece> heard,
                                    const FragmentMap& map);

} // namespace morvelin::NarrationCaptions
