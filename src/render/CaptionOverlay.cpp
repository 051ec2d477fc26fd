#include "render/CaptionOverlay.h"

#include <algorithm>
#include <utility>

#include "speech/Words.h"

namespace morvelin {

namespace {

constexpr double kLeastFontSize = 4;
constexpr double kFontSize = 0.045; ///< of the picture's height, at size 1
constexpr double kSmallestSize = 0.5;
constexpr double kLargestSize = 1.5;

/// A word as it was heard.
struct SpokenWord {
    std::string text;
    EditTime t;
};

/// The timed words of a cue, one for each piece between blanks.
std::vector<SpokenWord> spokenWords(const TimelineCue& cue) {
    std::vector<SpokenWord> words;
    for (const TimelineWord& word : cue.words)
        for (std::string& piece : wordsIn(word.text)) words.push_back({std::move(piece), word.t});
    return words;
}

/// When each word of the text lights, if all that were heard stand in it. The others, which a cut took out of the film,
/// light with the one before.
std::optional<std::vector<EditTime>> timesOfFoundWords(const std::vector<std::string>& text,
                                                       const std::vector<SpokenWord>& heard, EditTime start) {
    std::vector<EditTime> times;
    std::size_t found = 0;
    EditTime last = start;
    for (const std::string& word : text) {
        if (found < heard.size() && word == heard[found].text) last = heard[found++].t;
        times.push_back(last);
    }
    if (found < heard.size()) return std::nullopt;
    return times;
}

/// When each word of the cue's text lights. Where a person has written other words than those that were heard, theirs
/// share the times evenly.
std::vector<EditTime> lightTimes(const TimelineCue& cue, const std::vector<std::string>& text) {
    const std::vector<SpokenWord> heard = spokenWords(cue);
    if (heard.empty()) return std::vector<EditTime>(text.size(), cue.t);
    if (heard.size() != text.size())
        if (auto times = timesOfFoundWords(text, heard, cue.t)) return *times;

    std::vector<EditTime> times;
    times.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) times.push_back(heard[i * heard.size() / text.size()].t);
    return times;
}

} // namespace

std::optional<CaptionPlacement> captionAt(const CompositionInstruction& instruction, const Rectangle& videoRect,
                                          EditTime t) {
    const auto shows = [t](const TimelineCue& cue) { return cue.t <= t && t <= cue.endT; };
    const auto cue = std::ranges::find_if(instruction.captionCues, shows);
    if (cue == instruction.captionCues.end()) return std::nullopt;
    std::vector<std::string> text = wordsIn(cue->text);
    if (text.empty()) return std::nullopt;

    const double size = std::clamp(instruction.captionSize, kSmallestSize, kLargestSize);
    CaptionPlacement caption{{}, std::max(kLeastFontSize, videoRect.height * kFontSize * size), videoRect};
    const std::vector<EditTime> times = lightTimes(*cue, text);
    for (std::size_t i = 0; i < text.size(); ++i) caption.words.push_back({std::move(text[i]), times[i] <= t});
    return caption;
}

} // namespace morvelin
