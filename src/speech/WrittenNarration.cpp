#include "speech/WrittenNarration.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "core/base/Rounding.h"
#include "speech/CaptionEngines.h"
#include "speech/TakeWords.h"
#include "speech/Words.h"
#include "timeline/Tolerance.h"

namespace morvelin::WrittenNarration {

namespace {

constexpr double kCharactersPerSecond = 15;
constexpr Seconds kShortestReading = 1.2_s;
constexpr Seconds kShortestLine = 0.12_s;

/// The words at equal shares of the line's span, in the recording's time; none where the span is outside the edit.
std::vector<TranscriptWord> placedWords(std::vector<std::string> texts, EditTime at, EditTime until,
                                        const FragmentMap& map) {
    const Seconds share = (until - at) / static_cast<double>(texts.size());
    std::vector<TranscriptWord> words;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const EditTime from = at + share * static_cast<double>(i);
        const EditTime to = i + 1 == texts.size() ? until : std::min(from + share, until);
        if (const auto span = NarrationCaptions::recordedSpan(map, from, to))
            words.push_back(rounded({span->start, span->end, std::move(texts[i]), 1}));
    }
    return words;
}

FounderSourceTranscript withSegment(std::optional<FounderSourceTranscript> transcript, TranscriptSegment segment,
                                    Date now) {
    FounderSourceTranscript whole = transcript
                                        ? std::move(*transcript)
                                        : FounderSourceTranscript{std::string(kWrittenEngine), std::nullopt, now, {}};
    const auto place = std::ranges::upper_bound(whole.segments, segment.t, {}, &TranscriptSegment::t);
    whole.segments.insert(place, std::move(segment));
    return whole;
}

/// Known by text and start: a line written later may have cut another one's end.
auto keyOf(const CaptionCue& cue) { return std::pair(std::llround(cue.t.value * 1000), cue.text); }

} // namespace

std::string Error::description() const {
    switch (kind) {
    case Kind::EmptyText: return "Narration text is empty.";
    case Kind::OutsideTimeline:
        return fmt::format("{:.2f}s is outside this recording, which is {:.2f}s long.", at.value, duration.value);
    }
    return {};
}

Seconds readingTime(std::string_view text) {
    return std::max(Seconds(static_cast<double>(characterCount(text)) / kCharactersPerSecond), kShortestReading);
}

Result<Narrated, Error> narrate(const Line& line, const Words& words, std::span<const VideoFragment> fragments,
                                const CaptionMaker& maker) {
    std::vector<std::string> texts = wordsIn(line.text);
    if (texts.empty()) return failure(Error{Error::Kind::EmptyText, line.at, {}});
    const FragmentMap map({fragments.begin(), fragments.end()});
    const Error outside{Error::Kind::OutsideTimeline, line.at, map.duration()};
    if (!atLeast(line.at, EditTime()) || atLeast(line.at, EditTime(map.duration()))) return failure(outside);

    const std::string text = fmt::format("{}", fmt::join(texts, " "));
    const Seconds length = std::max(line.duration.value_or(readingTime(text)), kShortestLine);
    const EditTime at = std::max(line.at, EditTime());
    const EditTime until = std::min(at + length, EditTime(map.duration()));
    std::vector<TranscriptWord> placed = placedWords(std::move(texts), at, until, map);
    if (placed.empty()) return failure(outside);

    const TranscriptSegment segment = TranscriptSegment::of(std::move(placed));
    Narrated result{withSegment(words.transcript, segment, maker.clock.now()), {}, text, at, until};
    if (words.captions) {
        result.captions = *words.captions;
        std::ranges::move(cuesFrom({&segment, 1}, maker.ids), std::back_inserter(result.captions.cues));
        normalize(result.captions);
    } else {
        result.captions = trackFrom(result.transcript, maker);
    }
    return result;
}

std::optional<CaptionTrack> captionsWithout(const FounderSourceTranscript& transcript,
                                            const std::optional<CaptionTrack>& captions,
                                            std::span<const AudioStack::Layer> layers,
                                            std::span<const VideoFragment> fragments, const CaptionMaker& maker) {
    if (!captions) return std::nullopt;
    if (!isFromTake(captions->engine)) return NarrationCaptions::compose(layers, fragments, std::nullopt, maker).track;
    std::vector<std::pair<long long, std::string>> written;
    for (const CaptionCue& cue : cuesFrom(transcript.segments, maker.ids)) written.push_back(keyOf(cue));
    std::ranges::sort(written);
    CaptionTrack left = *captions;
    std::erase_if(left.cues, [&](const CaptionCue& cue) { return std::ranges::binary_search(written, keyOf(cue)); });
    return left;
}

} // namespace morvelin::WrittenNarration
