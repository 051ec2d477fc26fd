// Cuts text into what a reader takes for one character: a letter with its accents, an emoji of several parts.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace morvelin {

/// The grapheme clusters of a UTF-8 text in order. Bytes that are no UTF-8 are left out.
[[nodiscard]] std::vector<std::u32string> graphemes(std::string_view text);

} // namespace morvelin
