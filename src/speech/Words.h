// Small rules about the words of a text that captions and transcripts share.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "core/Transcript.h"

namespace morvelin {

/// The pieces of a text between white space (Unicode's included), none of them empty.
[[nodiscard]] std::vector<std::string> wordsIn(std::string_view text);

/// How many characters a text has, as code points.
[[nodiscard]] std::size_t characterCount(std::string_view text);

/// The middle of a word or a line, by which it is heard or not.
template <class Timed>
[[nodiscard]] SourceTime midpoint(const Timed& timed) {
    return SourceTime(0.5 * (timed.t.value + timed.endT.value));
}

/// With its times and confidence as files hold them, in thousandths.
[[nodiscard]] TranscriptWord rounded(TranscriptWord word);

/// The mean of the words' confidence, 1 without words.
[[nodiscard]] double meanConfidence(const std::vector<TranscriptWord>& words);

} // namespace morvelin
