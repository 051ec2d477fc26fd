#include "core/Transcript.h"

#include <algorithm>

#include "core/base/Rounding.h"

namespace morvelin {

namespace {

constexpr Seconds kPause = 0.8_s;
constexpr Seconds kLongestSegment = 15_s;
constexpr Seconds kTolerance = 1e-9_s;

bool endsSentence(const TranscriptWord& word) {
    return word.text.ends_with('.') || word.text.ends_with('?') || word.text.ends_with('!');
}

/// Whether a word can't join the open segment.
bool opensSegment(const std::vector<TranscriptWord>& open, const TranscriptWord& word) {
    if (open.empty()) return false;
    return word.t - open.back().endT >= kPause - kTolerance || endsSentence(open.back()) ||
           word.endT - open.front().t > kLongestSegment + kTolerance;
}

TranscriptSegment closed(std::vector<TranscriptWord> words) {
    TranscriptSegment segment;
    segment.t = words.front().t;
    segment.endT = words.back().endT;
    double confidence = 0;
    for (const TranscriptWord& word : words) {
        if (!segment.text.empty()) segment.text += ' ';
        segment.text += word.text;
        confidence += word.confidence;
    }
    segment.confidence = roundedTo3Decimals(confidence / static_cast<double>(words.size()));
    segment.words = std::move(words);
    return segment;
}

} // namespace

std::vector<TranscriptSegment> FounderSourceTranscript::segmentsFrom(std::vector<TranscriptWord> words) {
    std::ranges::stable_sort(words, {}, &TranscriptWord::t);
    std::vector<TranscriptSegment> segments;
    std::vector<TranscriptWord> open;
    for (TranscriptWord& word : words) {
        if (opensSegment(open, word)) segments.push_back(closed(std::exchange(open, {})));
        open.push_back(std::move(word));
    }
    if (!open.empty()) segments.push_back(closed(std::move(open)));
    return segments;
}

} // namespace morvelin
