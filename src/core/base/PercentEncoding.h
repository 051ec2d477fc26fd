// Percent-encoding (RFC 3986) of one component of an address.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace morvelin {

/// Every byte that isn't an ASCII letter or digit becomes `%XX`, in upper case.
[[nodiscard]] std::string percentEncoded(std::string_view text);

/// Nothing where a percent sign isn't followed by two hexadecimal digits.
[[nodiscard]] std::optional<std::string> percentDecoded(std::string_view text);

} // namespace morvelin
