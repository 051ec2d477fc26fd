// Percent-encoding (RFC 3986) of components of an address, and addresses of files.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace morvelin {

/// Every byte that isn't an ASCII letter or digit becomes `%XX`, in upper case.
[[nodiscard]] std::string percentEncoded(std::string_view text);

/// Nothing where a percent sign isn't followed by two hexadecimal digits.
[[nodiscard]] std::optional<std::string> percentDecoded(std::string_view text);

/// `file://` and the absolute path, each of its names encoded.
[[nodiscard]] std::string fileURL(const std::filesystem::path& path);
/// The path that a file URL names; a text that is no file URL is taken as a path.
[[nodiscard]] std::filesystem::path pathOfFileURL(const std::string& url);

} // namespace morvelin
