// Captions as they lie in the finished video: what subtitle files hold, and what is compared with the timeline.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "core/Captions.h"
#include "narration/AudioStack.h"

namespace morvelin {

struct TimelineWord {
    EditTime t;
    EditTime endT;
    std::string text;
    double confidence = 0;

    bool operator==(const TimelineWord&) const = default;
};

struct TimelineCue {
    UUID id;
    EditTime t;
    EditTime endT;
    std::string text;
    std::vector<TimelineWord> words;

    bool operator==(const TimelineCue&) const = default;
};

/// The cues that are left in the video, by time. With `pieces`, the recording's heard ones, a line keeps only the words
/// that are heard; an empty list means that none is. Without, lines go with the picture.
[[nodiscard]] std::vector<TimelineCue> timelineCues(const CaptionTrack& track, std::span<const VideoFragment> fragments,
                                                    const std::optional<std::vector<AudioLayout::Piece>>& pieces);

/// The same for a version as it stands: the heard pieces count for captions that come from the recording alone.
[[nodiscard]] std::vector<TimelineCue> timelineCues(const CaptionTrack& track, std::span<const VideoFragment> fragments,
                                                    std::span<const AudioStack::Layer> layers);

} // namespace morvelin
