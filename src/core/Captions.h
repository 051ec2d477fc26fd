// The timed lines of a version that are burned into its video and saved as subtitle files.
//
// Times are seconds of the recording, not of the edit: a cut hides a line without touching it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/Transcript.h"
#include "core/base/Identity.h"

namespace morvelin {

/// One line, shown from `t` to `endT`.
struct CaptionCue {
    UUID id;
    SourceTime t;
    SourceTime endT;
    std::string text;
    std::vector<TranscriptWord> words;

    bool operator==(const CaptionCue&) const = default;
};

/// Old files lack `id`, `text` or `words`: a text is then that of the words, and an id that stays all zero is replaced
/// by whoever opened the file (`ProjectBundle`), which holds the source of ids.
template <class Fields>
void describe(Fields& fields, Same<Fields, CaptionCue>& cue) {
    fields.withDefault("id", cue.id, UUID{});
    fields.required("t", cue.t);
    fields.required("endT", cue.endT);
    fields.withDefault("words", cue.words, std::vector<TranscriptWord>());
    fields.withDefault("text", cue.text, textOf(cue.words));
}

/// A version's captions. Once normalised they are sorted, none reaches into the next, and each has a length.
struct CaptionTrack {
    static constexpr std::int64_t kVersion = 1;

    std::int64_t version = kVersion;
    std::string engine; ///< where the words came from, see `speech/CaptionEngines.h`
    std::optional<std::string> language;
    Date createdAt;
    std::vector<CaptionCue> cues;

    bool operator==(const CaptionTrack&) const = default;
};

template <class Fields>
void describe(Fields& fields, Same<Fields, CaptionTrack>& track) {
    fields.required("version", track.version);
    fields.required("engine", track.engine);
    fields.optional("language", track.language);
    fields.required("createdAt", track.createdAt);
    fields.required("cues", track.cues);
}

} // namespace morvelin
