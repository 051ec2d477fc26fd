// How the tracks of a timeline read in tool results: one record for each fragment, click, ramp, key and annotation.
// All times are seconds of the edit timeline, positions fractions of the captured area, rounded to 3 decimals.
#pragma once

#include <functional>
#include <vector>

#include "core/CursorEvent.h"
#include "core/Keyframes.h"
#include "core/Project.h"
#include "core/ProjectVersion.h"
#include "core/Transcript.h"
#include "core/base/JSON.h"
#include "timeline/FragmentMap.h"

namespace morvelin {

/// A record of a track, and the span that it is about.
struct DescribedMoment {
    EditTime start;
    EditTime end;
    JSONValue record;
};

using DescribedTrack = std::vector<DescribedMoment>;

[[nodiscard]] DescribedTrack describeFragments(const FragmentMap& fragments);
[[nodiscard]] DescribedTrack describeClicks(const std::vector<ClickPing>& clicks);

/// A ramp and the level it holds up to the next one. Its focal point is that of the first key it owns.
[[nodiscard]] DescribedTrack describeZooms(const Project& project);
/// The record of one ramp, which has to be there.
[[nodiscard]] JSONValue describeZoom(const EditPayload& edit, const UUID& id);

/// Each stored key, and the centre that the frame ends up at.
[[nodiscard]] DescribedTrack describePositions(const Project& project);
/// The records of the keys that a filter lets through.
[[nodiscard]] JSONValue describePositions(const EditPayload& edit,
                                          const std::function<bool(const PositionKeyframe&)>& isWanted);

[[nodiscard]] DescribedTrack describeAnnotations(const Project& project);
[[nodiscard]] JSONValue describeAnnotation(const FocusKeyframe& focus);
[[nodiscard]] JSONValue describeAnnotation(const MaskKeyframe& mask);
[[nodiscard]] JSONValue describeAnnotation(const TapTapKeyframe& tapTap);

/// The transcript's lines where the edit still shows them.
[[nodiscard]] DescribedTrack describeNarration(const FounderSourceTranscript& transcript, const FragmentMap& fragments);

} // namespace morvelin
