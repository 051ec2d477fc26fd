#include "speech/CaptionComposer.h"

#include <algorithm>

#include "timeline/Tolerance.h"

namespace morvelin {

namespace {

constexpr Seconds kLongestLine = 4_s;
constexpr Seconds kShortestCue = 1e-6_s;

} // namespace

CaptionCue cueOf(std::vector<TranscriptWord> words, IdSource& ids) {
    CaptionCue cue{ids.next(), words.front().t, words.back().endT, textOf(words), {}};
    cue.words = std::move(words);
    return cue;
}

std::vector<CaptionCue> cuesFrom(std::span<const TranscriptSegment> segments, IdSource& ids) {
    std::vector<CaptionCue> cues;
    for (const TranscriptSegment& segment : segments) {
        std::vector<TranscriptWord> open;
        for (const TranscriptWord& word : segment.words) {
            if (!open.empty() && !atMost(word.endT - open.front().t, kLongestLine))
                cues.push_back(cueOf(std::exchange(open, {}), ids));
            open.push_back(word);
        }
        if (!open.empty()) cues.push_back(cueOf(std::move(open), ids));
    }
    return cues;
}

void normalize(CaptionTrack& track) {
    std::ranges::stable_sort(track.cues, {}, &CaptionCue::t);
    for (std::size_t i = 1; i < track.cues.size(); ++i)
        track.cues[i - 1].endT = std::min(track.cues[i - 1].endT, track.cues[i].t);
    std::erase_if(track.cues, [](const CaptionCue& cue) { return cue.endT - cue.t < kShortestCue; });
}

CaptionTrack newTrack(std::string engine, std::optional<std::string> language, std::vector<CaptionCue> cues,
                      const CaptionMaker& maker) {
    CaptionTrack track{CaptionTrack::kVersion, std::move(engine), std::move(language), maker.clock.now(),
                       std::move(cues)};
    normalize(track);
    return track;
}

CaptionTrack trackFrom(const FounderSourceTranscript& transcript, const CaptionMaker& maker) {
    return newTrack(transcript.engine, transcript.language, cuesFrom(transcript.segments, maker.ids), maker);
}

std::optional<CaptionTrack> captionsOnOpening(std::optional<CaptionTrack> captions,
                                              const std::optional<FounderSourceTranscript>& transcript,
                                              const CaptionMaker& maker) {
    if (captions || !transcript) return captions;
    return trackFrom(*transcript, maker);
}

} // namespace morvelin
