#include "speech/TranscriptCorrection.h"

#include <algorithm>
#include <cmath>

#include "speech/Words.h"

namespace morvelin {

namespace {

std::vector<TranscriptWord> wordsByTime(std::vector<TranscriptSegment> segments) {
    std::vector<TranscriptWord> words;
    for (TranscriptSegment& segment : segments) std::ranges::move(segment.words, std::back_inserter(words));
    std::ranges::stable_sort(words, {}, &TranscriptWord::t);
    return words;
}

/// The old word whose timing new word `i` of `n` takes, of `m`.
std::size_t timingOf(std::size_t i, std::size_t n, std::size_t m) {
    const double share = n == 1 ? 0 : static_cast<double>(i) / static_cast<double>(n - 1);
    return static_cast<std::size_t>(std::llround(share * static_cast<double>(m - 1)));
}

} // namespace

std::optional<FounderSourceTranscript> corrected(FounderSourceTranscript transcript, std::string_view text) {
    const std::vector<TranscriptWord> old = wordsByTime(std::move(transcript.segments));
    std::vector<std::string> texts = wordsIn(text);
    if (old.empty() || texts.empty()) return std::nullopt;

    std::vector<TranscriptWord> words;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        TranscriptWord word = old[timingOf(i, texts.size(), old.size())];
        word.text = std::move(texts[i]);
        words.push_back(rounded(std::move(word)));
    }
    transcript.segments = FounderSourceTranscript::segmentsFrom(std::move(words));
    return transcript;
}

NarrationCaptions::Synced captionsAfterTranscriptChange(const std::optional<CaptionTrack>& captions,
                                                        const std::optional<FounderSourceTranscript>& before,
                                                        const std::optional<FounderSourceTranscript>& after,
                                                        std::span<const AudioStack::Layer> layers,
                                                        std::span<const VideoFragment> fragments,
                                                        const CaptionMaker& maker) {
    const auto composed = [&](const std::optional<FounderSourceTranscript>& transcript) {
        if (!layers.empty()) return NarrationCaptions::compose(layers, fragments, transcript, maker);
        NarrationCaptions::Composition alone;
        if (transcript) alone.track = trackFrom(*transcript, maker);
        alone.transcript = transcript;
        return alone;
    };
    return NarrationCaptions::follow(captions, composed(before), composed(after),
                                     NarrationCaptions::EditedCaptions::Keep);
}

} // namespace morvelin
