#include "speech/SubtitleFile.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

namespace morvelin {

namespace {

std::string timeText(EditTime t, char decimalMark) {
    const long long ms = std::llround(std::max(t.value, 0.0) * 1000);
    return fmt::format("{:02}:{:02}:{:02}{}{:03}", ms / 3600000, ms / 60000 % 60, ms / 1000 % 60, decimalMark,
                       ms % 1000);
}

std::string lineOf(const TimelineCue& cue, char decimalMark) {
    return fmt::format("{} --> {}\n{}\n", timeText(cue.t, decimalMark), timeText(cue.endT, decimalMark), cue.text);
}

struct Sentence {
    std::string operator()(const SubtitleError::NothingLeft&) const { return "every transcribed word falls in a cut"; }
    std::string operator()(const FileError& error) const {
        return "Could not write the caption file: " + error.description();
    }
};

} // namespace

std::string srt(std::span<const TimelineCue> cues) {
    std::string text;
    for (std::size_t i = 0; i < cues.size(); ++i)
        text += fmt::format("{}{}\n{}", i == 0 ? "" : "\n", i + 1, lineOf(cues[i], ','));
    return text;
}

std::string vtt(std::span<const TimelineCue> cues) {
    std::string text = "WEBVTT\n\n";
    for (std::size_t i = 0; i < cues.size(); ++i) text += fmt::format("{}{}", i == 0 ? "" : "\n", lineOf(cues[i], '.'));
    return text;
}

std::string subtitleText(std::span<const TimelineCue> cues, SubtitleFormat format) {
    switch (format) {
    case SubtitleFormat::SRT: return srt(cues);
    case SubtitleFormat::VTT: return vtt(cues);
    }
    return {};
}

std::string SubtitleError::description() const { return std::visit(Sentence{}, reason); }

Result<void, SubtitleError> writeSubtitles(std::span<const TimelineCue> cues, SubtitleFormat format,
                                           const std::filesystem::path& path) {
    if (cues.empty()) return failure(SubtitleError(SubtitleError::NothingLeft{}));
    if (auto written = writeFileAtomically(path, subtitleText(cues, format)); !written)
        return passOn(std::move(written));
    return {};
}

} // namespace morvelin
