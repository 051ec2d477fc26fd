// Bytes as text, for documents that carry pictures.
#pragma once

#include <string>
#include <string_view>

namespace morvelin {

/// The standard alphabet with padding, without line breaks.
[[nodiscard]] std::string base64(std::string_view bytes);

/// The bytes of such a text; what isn't in the alphabet is passed over.
[[nodiscard]] std::string bytesOfBase64(std::string_view text);

} // namespace morvelin
