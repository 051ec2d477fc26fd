// Captions as SubRip and WebVTT files.
#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <variant>

#include "core/base/Files.h"
#include "core/base/Result.h"
#include "speech/TimelineCues.h"

namespace morvelin {

enum class SubtitleFormat { SRT, VTT };

/// The raw values are also the files' extensions.
constexpr auto rawValues(std::type_identity<SubtitleFormat>) {
    using enum SubtitleFormat;
    return std::to_array<std::pair<SubtitleFormat, std::string_view>>({{SRT, "srt"}, {VTT, "vtt"}});
}

[[nodiscard]] std::string srt(std::span<const TimelineCue> cues);
[[nodiscard]] std::string vtt(std::span<const TimelineCue> cues);
[[nodiscard]] std::string subtitleText(std::span<const TimelineCue> cues, SubtitleFormat format);

struct SubtitleError {
    /// The captions have no line that is still in the video.
    struct NothingLeft {};
    using Reason = std::variant<NothingLeft, FileError>;

    Reason reason;

    template <class Case>
    requires std::constructible_from<Reason, Case> SubtitleError(Case reason_) : reason(std::move(reason_)) {}

    [[nodiscard]] std::string description() const;
};

/// Writes the file, which is whole or not there. Without a line left in the video nothing is written.
Result<void, SubtitleError> writeSubtitles(std::span<const TimelineCue> cues, SubtitleFormat format,
                                           const std::filesystem::path& path);

} // namespace morvelin
