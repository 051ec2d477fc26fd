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

} // namespace

std::string textOf(std::span<const TranscriptWord> words) {
    std::string text;
    for (const TranscriptWord& word : words) {
        if (!text.empty()) text += ' ';
        text += word.text;
    }
    return text;
}

TranscriptSegment TranscriptSegment::of(std::vector<TranscriptWord> words) {
    double confidence = 0;
    for (const TranscriptWord& word : words) confidence += word.confidence;
    TranscriptSegment segment{words.front().t, words.back().endT, textOf(words), 0, {}};
    segment.confidence = roundedTo3Decimals(confidence / static_cast<double>(words.size()));
    segment.words = std::move(words);
    return segment;
}

std::vector<TranscriptSegment> FounderSourceTranscript::segmentsFrom(std::vector<TranscriptWord> words) {
    std::ranges::stable_sort(words, {}, &TranscriptWord::t);
    std::vector<TranscriptSegment> segments;
    std::vector<TranscriptWord> open;
    for (TranscriptWord& word : words) {
        if (opensSegment(open, word)) segments.push_back(TranscriptSegment::of(std::exchange(open, {})));
        open.push_back(std::move(word));
    }
    if (!open.empty()) segments.push_back(TranscriptSegment::of(std::move(open)));
    return segments;
}

} // namespace morvelin
