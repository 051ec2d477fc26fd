// Digests of texts, for telling whether two things are the same without keeping them.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace morvelin {

using SHA256Digest = std::array<std::uint8_t, 32>;

/// The SHA-256 of the text's bytes.
[[nodiscard]] SHA256Digest sha256(std::string_view text);

} // namespace morvelin
