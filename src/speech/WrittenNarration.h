// Lines that are written into a project's transcript instead of spoken, so that they are shown and never heard. Pure.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "core/base/Result.h"
#include "speech/NarrationCaptions.h"

namespace morvelin::WrittenNarration {

/// How long a reader needs for a text: 15 characters a second, and at least 1.2 s.
[[nodiscard]] Seconds readingTime(std::string_view text);

struct Line {
    std::string text;
    EditTime at;
    std::optional<Seconds> duration; ///< absent means the reading time
};

struct Error {
    enum class Kind { EmptyText, OutsideTimeline };

    Kind kind = Kind::EmptyText;
    EditTime at;
    Seconds duration; ///< of the timeline

    [[nodiscard]] std::string description() const;
};

struct Narrated {
    FounderSourceTranscript transcript;
    CaptionTrack captions;
    std::string text; ///< as it is shown
    EditTime at;
    EditTime until; ///< the video's end at most
};

/// A project's words as they are.
struct Words {
    const std::optional<FounderSourceTranscript>& transcript;
    const std::optional<CaptionTrack>& captions;
};

/// Adds a line to the transcript and to the captions, whose other lines stay as they are. The line's words share its
/// span equally. Captions are to be turned on.
[[nodiscard]] Result<Narrated, Error> narrate(const Line& line, const Words& words,
                                              std::span<const VideoFragment> fragments, const CaptionMaker& maker);

/// The captions once the transcript is gone: what the takes that are heard give. Captions of one take lose only the
/// lines that were the transcript's.
[[nodiscard]] std::optional<CaptionTrack> captionsWithout(const FounderSourceTranscript& transcript,
                                                          const std::optional<CaptionTrack>& captions,
                                                          std::span<const AudioStack::Layer> layers,
                                                          std::span<const VideoFragment> fragments,
                                                          const CaptionMaker& maker);

inline constexpr const char* kClearedNote =
    "Every narration line was removed. Captions stay on; add new lines with narrate.";
inline constexpr const char* kNothingToClearNote = "There was no narration on this project.";

} // namespace morvelin::WrittenNarration
