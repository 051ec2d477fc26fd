// Small questions about text that many modules ask.
#pragma once

#include <string>
#include <string_view>

namespace morvelin {

/// The text without white space and line ends at both ends (Unicode's white space included).
[[nodiscard]] std::string trimmed(std::string_view text);

/// Whether the bytes are UTF-8 text; a NUL is no text.
[[nodiscard]] bool isUTF8(std::string_view bytes);

/// The text cut to at most `limit` bytes, never inside a UTF-8 character.
[[nodiscard]] std::string cutAtCharacter(std::string_view text, std::size_t limit);

/// The text in the form in which two texts that differ in case alone are equal, however their accents are composed.
/// Bytes that are no UTF-8 become replacement characters.
[[nodiscard]] std::string caseFolded(std::string_view text);

/// The text in the form in which two texts that differ in case or diacritics alone are equal: "Café" is "cafe".
[[nodiscard]] std::string withoutCaseAndDiacritics(std::string_view text);

} // namespace morvelin
