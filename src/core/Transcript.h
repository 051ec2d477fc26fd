// What was said in a recording, with the time of every word. Times are seconds of the source file, not of the edit.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "core/base/Date.h"
#include "core/base/JSON.h"

namespace morvelin {

struct TranscriptWord {
    SourceTime t;
    SourceTime endT;
    std::string text;
    double confidence = 0;

    bool operator==(const TranscriptWord&) const = default;
};

template <class Fields>
void describe(Fields& fields, Same<Fields, TranscriptWord>& word) {
    fields.required("t", word.t);
    fields.required("endT", word.endT);
    fields.required("text", word.text);
    fields.required("confidence", word.confidence);
}

/// The words' texts, joined by one blank.
[[nodiscard]] std::string textOf(std::span<const TranscriptWord> words);

/// A phrase: words without a long pause or an end mark between them.
struct TranscriptSegment {
    SourceTime t;
    SourceTime endT;
    std::string text;
    double confidence = 0;
    std::vector<TranscriptWord> words;

    bool operator==(const TranscriptSegment&) const = default;

    /// Takes its times from the first and the last word, its text from all, and the mean of their confidence. There
    /// must be a word.
    [[nodiscard]] static TranscriptSegment of(std::vector<TranscriptWord> words);
};

template <class Fields>
void describe(Fields& fields, Same<Fields, TranscriptSegment>& segment) {
    fields.required("t", segment.t);
    fields.required("endT", segment.endT);
    fields.required("text", segment.text);
    fields.required("confidence", segment.confidence);
    fields.required("words", segment.words);
}

/// The transcript that a project holds (`transcript.json`).
struct FounderSourceTranscript {
    std::string engine;
    std::optional<std::string> language; ///< the two-letter code
    Date createdAt;
    std::vector<TranscriptSegment> segments;

    bool operator==(const FounderSourceTranscript&) const = default;

    /// Groups words into segments. A pause of 0.8 s, an end mark, and a span that would pass 15 s each begin a new one.
    [[nodiscard]] static std::vector<TranscriptSegment> segmentsFrom(std::vector<TranscriptWord> words);
};

template <class Fields>
void describe(Fields& fields, Same<Fields, FounderSourceTranscript>& transcript) {
    fields.required("engine", transcript.engine);
    fields.optional("language", transcript.language);
    fields.required("createdAt", transcript.createdAt);
    fields.required("segments", transcript.segments);
}

} // namespace morvelin
