// Small questions about text that many modules ask.
#pragma once

#include <string>
#include <string_view>

namespace morvelin {

/// The text without white space and line ends at both ends (Unicode's white space included).
[[nodiscard]] std::string trimmed(std::string_view text);

/// The text cut to at most `limit` bytes, never inside a UTF-8 character.
[[nodiscard]] std::string cutAtCharacter(std::string_view text, std::size_t limit);

} // namespace morvelin
