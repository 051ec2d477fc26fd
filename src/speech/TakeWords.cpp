#include "speech/TakeWords.h"

#include <algorithm>
#include <sstream>

#include "core/base/Text.h"
#include "narration/Coverage.h"
#include "speech/Words.h"
#include "timeline/Tolerance.h"

namespace morvelin::NarrationCaptions {

namespace {

/// Take time to timeline, through the take's arrangement.
class TakeClock {
public:
    TakeClock(const NarrationTake& take, Seconds duration)
        : m_pieces(take.arrangement ? *take.arrangement : take.pieces()),
          m_duration(duration) {
        std::ranges::stable_sort(m_pieces, {}, &NarrationPiece::takeStart);
        for (const NarrationPiece& piece : m_pieces)
            m_furthest.push_back(m_furthest.empty() ? piece.takeEnd : std::max(m_furthest.back(), piece.takeEnd));
    }

    /// Where a word is said; nothing where it is in no piece, or starts past the video's end.
    [[nodiscard]] std::optional<AudioLayout::EditRange> place(const TranscriptWord& word) const {
        const Seconds t = word.t.sinceZero() + Seconds(kTolerance);
        const auto furthest = std::ranges::upper_bound(m_furthest, t);
        if (furthest == m_furthest.end()) return std::nullopt;
        const NarrationPiece& piece = m_pieces[static_cast<std::size_t>(furthest - m_furthest.begin())];
        if (piece.takeStart > t) return std::nullopt;
        const Seconds shift = piece.timelineStart.sinceZero() - piece.takeStart;
        const EditTime start(word.t.sinceZero() + shift);
        if (start >= EditTime(m_duration)) return std::nullopt;
        const Seconds end = std::min(std::min(piece.takeEnd, word.endT.sinceZero()) + shift, m_duration);
        return AudioLayout::EditRange{start, EditTime(end)};
    }

private:
    std::vector<NarrationPiece> m_pieces; ///< by take time
    std::vector<Seconds> m_furthest;      ///< the largest `takeEnd` up to each
    Seconds m_duration;
};

class HeardWordMap {
public:
    HeardWordMap(const NarrationTake& take, std::span<const AudioLayout::Piece> heard, const FragmentMap& map)
        : m_clock(take, map.duration()),
          m_heard(heard),
          m_map(map) {}

    [[nodiscard]] std::vector<TranscriptWord> operator()(std::span<const TranscriptWord> words) const {
        std::vector<TranscriptWord> heard;
        for (const TranscriptWord& word : words) {
            const auto place = m_clock.place(word);
            if (!place || !m_heard.holds(EditTime(0.5 * (place->start.value + place->end.value)))) continue;
            if (const auto span = recordedSpan(m_map, place->start, place->end))
                heard.push_back({span->start, span->end, word.text, word.confidence});
        }
        return heard;
    }

private:
    TakeClock m_clock;
    AudioLayout::Coverage m_heard;
    const FragmentMap& m_map;
};

TranscriptSegment lineOf(std::vector<TranscriptWord> words) {
    const SourceTime start = std::ranges::min(words, {}, &TranscriptWord::t).t;
    const SourceTime end = std::ranges::max(words, {}, &TranscriptWord::endT).endT;
    TranscriptSegment line = TranscriptSegment::of(std::move(words));
    line.t = start;
    line.endT = end;
    return line;
}

/// How many words each line of a script has; empty lines don't count.
std::vector<std::size_t> wordsPerLine(const std::string& script) {
    std::vector<std::size_t> counts;
    std::istringstream lines(script);
    for (std::string line; std::getline(lines, line);)
        if (const std::size_t count = wordsIn(line).size(); count > 0) counts.push_back(count);
    return counts;
}

} // namespace

std::optional<AudioLayout::Range<SourceTime>> recordedSpan(const FragmentMap& map, EditTime from, EditTime to) {
    const auto start = map.sourceTime(from);
    const auto end = map.sourceTime(to);
    if (!start || !end) return std::nullopt;
    // What ends with its fragment ends there, and not where the picture goes on after the cut.
    const FragmentMap::Span& span = map.spans()[start->span];
    const SourceTime shown = atMost(to, span.end()) ? span.fragment.sourceEnd : end->time;
    return AudioLayout::Range<SourceTime>{start->time,
                                          std::max(start->time, end->span == start->span ? end->time : shown)};
}

std::optional<std::vector<TranscriptSegment>> segments(const NarrationTake& take,
                                                       std::span<const TranscriptWord> words) {
    if (take.source != NarrationTake::Source::ElevenLabs || take.revoiced.value_or(false) || !take.script)
        return std::nullopt;
    std::vector<TranscriptSegment> lines;
    std::size_t dealt = 0;
    for (const std::size_t count : wordsPerLine(*take.script)) {
        if (dealt + count > words.size()) return std::nullopt;
        const auto line = words.subspan(dealt, count);
        lines.push_back(TranscriptSegment::of({line.begin(), line.end()}));
        dealt += count;
    }
    return dealt == words.size() ? std::optional(std::move(lines)) : std::nullopt;
}

HeardWords heardWords(const NarrationTake& take, std::span<const AudioLayout::Piece> heard, const FragmentMap& map) {
    const std::vector<TranscriptWord> words = take.words.value_or(std::vector<TranscriptWord>());
    const HeardWordMap inRecording(take, heard, map);
    const auto lines = segments(take, words);
    if (!lines) return {FounderSourceTranscript::segmentsFrom(inRecording(words)), false};
    HeardWords result{{}, true};
    for (const TranscriptSegment& line : *lines)
        if (auto left = inRecording(line.words); !left.empty()) result.segments.push_back(lineOf(std::move(left)));
    return result;
}

} // namespace morvelin::NarrationCaptions
