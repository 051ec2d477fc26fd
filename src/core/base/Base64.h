// Bytes as text, for documents that carry pictures.
#pragma once

#include <string>
#include <string_view>

namespace morvelin {

/// The standard alphabet with padding, without line breaks.
[[nodiscard]] std::string base64(std::string_view bytes);

} // namespace morvelin
