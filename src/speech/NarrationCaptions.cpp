#include "speech/NarrationCaptions.h"

#include <algorithm>
#include <cmath>

#include "narration/AudioTimes.h"
#include "speech/CaptionEngines.h"
#include "speech/TakeWords.h"
#include "speech/Words.h"

namespace morvelin::NarrationCaptions {

namespace {

using AudioLayout::Piece;

constexpr double kSameTime = 0.001; ///< seconds that the ends of unedited lines may differ by

/// What one layer gives.
struct Part {
    CaptionTrack track;
    FounderSourceTranscript transcript;
};

std::vector<CaptionCue> oneCueEach(std::span<const TranscriptSegment> lines, IdSource& ids) {
    std::vector<CaptionCue> cues;
    for (const TranscriptSegment& line : lines) cues.push_back({ids.next(), line.t, line.endT, line.text, line.words});
    return cues;
}

std::optional<Part> takePart(const NarrationTake& take, std::span<const Piece> heard, const FragmentMap& map,
                             const CaptionMaker& maker) {
    if (!take.words || take.words->empty()) return std::nullopt;
    HeardWords words = heardWords(take, heard, map);
    auto cues = words.areScriptLines ? oneCueEach(words.segments, maker.ids) : cuesFrom(words.segments, maker.ids);
    CaptionTrack track = newTrack(engineOf(take), std::nullopt, std::move(cues), maker);
    if (track.cues.empty()) return std::nullopt;
    return Part{std::move(track), {engineOf(take), std::nullopt, take.createdAt, std::move(words.segments)}};
}

/// Tells the recording's words that something else is heard over from those that play, or were cut.
class RecordingFilter {
public:
    RecordingFilter(std::span<const Piece> heard, std::span<const VideoFragment> fragments) : m_heard(heard) {
        std::vector<Piece> laid;
        for (const AudioLayout::Block& block : AudioLayout::blocks(fragments)) laid.push_back(block.piece);
        m_laid = AudioLayout::SourceIndex(laid);
    }

    [[nodiscard]] std::vector<TranscriptSegment> operator()(std::span<const TranscriptSegment> segments) const {
        std::vector<TranscriptSegment> left;
        for (const TranscriptSegment& segment : segments)
            if (auto part = uncovered(segment)) left.push_back(std::move(*part));
        return left;
    }

private:
    template <class Timed>
    [[nodiscard]] bool isCovered(const Timed& timed) const {
        const SourceTime middle = midpoint(timed);
        return m_laid.holder(middle, 0) && !m_heard.holder(middle, AudioLayout::kSlack);
    }

    [[nodiscard]] std::optional<TranscriptSegment> uncovered(const TranscriptSegment& segment) const {
        if (segment.words.empty()) return isCovered(segment) ? std::nullopt : std::optional(segment);
        std::vector<TranscriptWord> words;
        for (const TranscriptWord& word : segment.words)
            if (!isCovered(word)) words.push_back(word);
        if (words.empty()) return std::nullopt;
        return words.size() == segment.words.size() ? segment : TranscriptSegment::of(std::move(words));
    }

    AudioLayout::SourceIndex m_heard;
    AudioLayout::SourceIndex m_laid; ///< all sound that is in the edit, before anything covers it
};

Part recordingPart(FounderSourceTranscript transcript, std::span<const Piece> heard,
                   std::span<const VideoFragment> fragments, const CaptionMaker& maker) {
    transcript.segments = RecordingFilter(heard, fragments)(transcript.segments);
    CaptionTrack track = trackFrom(transcript, maker);
    return {std::move(track), std::move(transcript)};
}

Part joined(std::vector<Part> parts, const CaptionMaker& maker) {
    if (parts.size() == 1) return std::move(parts.front());
    FounderSourceTranscript transcript = std::move(parts.front().transcript);
    transcript.engine = std::string(kTracksEngine);
    std::vector<CaptionCue> cues;
    std::optional<std::string> language;
    for (Part& part : parts) {
        if (!language) language = part.track.language;
        std::ranges::move(part.track.cues, std::back_inserter(cues));
        if (&part != &parts.front())
            std::ranges::move(part.transcript.segments, std::back_inserter(transcript.segments));
    }
    std::ranges::stable_sort(transcript.segments, {}, &TranscriptSegment::t);
    return {newTrack(std::string(kTracksEngine), std::move(language), std::move(cues), maker), std::move(transcript)};
}

bool hasCues(const std::optional<CaptionTrack>& track) { return track && !track->cues.empty(); }

} // namespace

Composition compose(std::span<const AudioStack::Layer> layers, std::span<const VideoFragment> fragments,
                    const std::optional<FounderSourceTranscript>& transcript, const CaptionMaker& maker) {
    const FragmentMap map({fragments.begin(), fragments.end()});
    const auto heard = AudioStack::audible(layers);
    Composition composition;
    std::vector<Part> parts;
    for (std::size_t i = 0; i < layers.size(); ++i) {
        if (heard[i].empty()) continue;
        std::optional<Part> part;
        if (layers[i].take)
            part = takePart(*layers[i].take, heard[i], map, maker);
        else if (transcript)
            part = recordingPart(*transcript, heard[i], fragments, maker);
        if (part)
            parts.push_back(std::move(*part));
        else
            composition.isComplete = false;
    }
    // A recording of which only silence is heard leaves the captions those of the takes.
    if (std::ranges::any_of(parts, [](const Part& part) { return !part.track.cues.empty(); }))
        std::erase_if(parts, [](const Part& part) { return part.track.cues.empty(); });
    if (parts.empty()) return composition;
    Part whole = joined(std::move(parts), maker);
    composition.track = std::move(whole.track);
    composition.transcript = std::move(whole.transcript);
    return composition;
}

bool isSame(const CaptionTrack& a, const CaptionTrack& b) {
    const auto isClose = [](SourceTime x, SourceTime y) { return std::abs((x - y).value) < kSameTime; };
    return std::ranges::equal(a.cues, b.cues, [&](const CaptionCue& x, const CaptionCue& y) {
        return x.text == y.text && isClose(x.t, y.t) && isClose(x.endT, y.endT);
    });
}

bool isEdited(const std::optional<CaptionTrack>& existing, const std::optional<CaptionTrack>& composed) {
    if (!existing) return false;
    return !composed || !isSame(*existing, *composed);
}

Synced follow(const std::optional<CaptionTrack>& existing, const Composition& earlier, const Composition& later,
              EditedCaptions edited) {
    using enum NarrationCaptionOutcome;
    if (!later.isComplete) return {NoTimings, hasCues(existing), existing};
    if (edited == EditedCaptions::Keep && hasCues(existing) && isEdited(existing, earlier.track)) {
        const bool predate = !later.track || !isSame(*existing, *later.track);
        return {KeptEdited, predate, existing};
    }
    return {later.track ? Written : NoTimings, false, later.track};
}

Synced sync(const TrackChange& change, EditedCaptions edited, const CaptionMaker& maker) {
    const auto composed = [&](std::span<const AudioTrackRef> tracks) {
        return compose(AudioStack::layers(tracks, change.edit), change.edit.fragments, change.transcript, maker);
    };
    return follow(change.captions, composed(change.before), composed(change.after), edited);
}

} // namespace morvelin::NarrationCaptions
