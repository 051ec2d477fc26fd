// Words, lines and clocks that the tests of captions share.
#pragma once

#include <sstream>

#include <fmt/format.h>

#include "core/VideoFragment.h"
#include "speech/CaptionComposer.h"

namespace morvelin::test {

inline UUID id(int number) { return UUID{{static_cast<std::uint8_t>(number)}}; }

inline TranscriptWord word(double t, double endT, std::string text, double confidence = 1) {
    return {SourceTime(t), SourceTime(endT), std::move(text), confidence};
}

/// One word for each second from `start`.
inline std::vector<TranscriptWord> words(const std::string& text, double start = 0) {
    std::vector<TranscriptWord> all;
    std::istringstream stream(text);
    for (std::string each; stream >> each; start += 1) all.push_back(word(start, start + 1, each));
    return all;
}

inline CaptionCue cue(int number, double t, double endT, std::vector<TranscriptWord> words = {}) {
    const std::string text = textOf(words);
    return {id(number), SourceTime(t), SourceTime(endT), text, std::move(words)};
}

inline FounderSourceTranscript transcriptOf(std::vector<TranscriptWord> words) {
    return {"recogniser", "en", Date{}, FounderSourceTranscript::segmentsFrom(std::move(words))};
}

inline VideoFragment fragment(int order, double from, double to, double speed = 1,
                              std::optional<FragmentAudio> audio = {}) {
    return {id(100 + order), SourceTime(from), SourceTime(to), speed, order, audio};
}

/// "0-2 one two | 3-4 three"
template <class Cues>
std::string shown(const Cues& cues) {
    std::string all;
    for (const auto& each : cues)
        all += fmt::format("{}{:g}-{:g} {}", all.empty() ? "" : " | ", each.t.value, each.endT.value, each.text);
    return all;
}

class FixedClock final : public WallClock {
public:
    [[nodiscard]] Date now() const override { return Date::fromUnixSeconds(1000); }
    [[nodiscard]] HostTime uptime() const override { return {}; }
};

struct Maker {
    SeededIdSource ids{1};
    FixedClock clock;
    CaptionMaker maker{ids, clock};
};

} // namespace morvelin::test
