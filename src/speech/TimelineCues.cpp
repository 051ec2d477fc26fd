#include "speech/TimelineCues.h"

#include <algorithm>

#include "narration/AudioTimes.h"
#include "speech/CaptionEngines.h"
#include "speech/Words.h"
#include "timeline/Tolerance.h"

namespace morvelin {

namespace {

using AudioLayout::Times;

/// The cue with the words that are heard, if any is; its ends move only where words were lost.
std::optional<CaptionCue> heardPart(CaptionCue cue, const Times& times) {
    if (!times.hasPieces() || cue.words.empty()) return cue;
    const TranscriptWord first = cue.words.front();
    const TranscriptWord last = cue.words.back();
    const std::size_t lost = std::erase_if(
        cue.words, [&](const TranscriptWord& word) { return !times.timelineTime(midpoint(word)).has_value(); });
    if (cue.words.empty()) return std::nullopt;
    if (lost == 0) return cue;
    cue.text = textOf(cue.words);
    if (cue.words.front() != first) cue.t = cue.words.front().t;
    if (cue.words.back() != last) cue.endT = cue.words.back().endT;
    return cue;
}

std::optional<TimelineCue> onTimeline(const CaptionCue& cue, const Times& times) {
    const auto span = times.sourceSpan(cue.t, cue.endT);
    if (!span || atMost(span->end, span->start)) return std::nullopt;
    TimelineCue placed{cue.id, span->start, span->end, cue.text, {}};
    for (const TranscriptWord& word : cue.words)
        if (const auto place = times.sourceSpan(word.t, word.endT))
            placed.words.push_back({place->start, place->end, word.text, word.confidence});
    return placed;
}

} // namespace

std::vector<TimelineCue> timelineCues(const CaptionTrack& track, std::span<const VideoFragment> fragments,
                                      const std::optional<std::vector<AudioLayout::Piece>>& pieces) {
    const Times times(fragments, pieces);
    std::vector<TimelineCue> cues;
    for (const CaptionCue& cue : track.cues)
        if (const auto heard = heardPart(cue, times))
            if (auto placed = onTimeline(*heard, times)) cues.push_back(std::move(*placed));
    std::ranges::stable_sort(cues, {}, &TimelineCue::t);
    return cues;
}

std::vector<TimelineCue> timelineCues(const CaptionTrack& track, std::span<const VideoFragment> fragments,
                                      std::span<const AudioStack::Layer> layers) {
    if (!isFromRecordingAlone(track.engine)) return timelineCues(track, fragments, std::nullopt);
    return timelineCues(track, fragments, AudioStack::heardRecording(layers, fragments));
}

} // namespace morvelin
