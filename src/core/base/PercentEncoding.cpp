#include "core/base/PercentEncoding.h"

#include <charconv>

#include <fmt/format.h>

namespace morvelin {

namespace {

constexpr std::string_view kFileScheme = "file://";

bool isPlain(unsigned char byte) {
    return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
}

std::optional<char> hexadecimalByte(std::string_view digits) {
    unsigned value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    if (error != std::errc() || digits.size() != 2 || end != digits.data() + 2) return std::nullopt;
    return static_cast<char>(value);
}

} // namespace

std::string percentEncoded(std::string_view text) {
    std::string encoded;
    encoded.reserve(text.size());
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (isPlain(byte))
            encoded += c;
        else
            encoded += fmt::format("%{:02X}", byte);
    }
    return encoded;
}

std::optional<std::string> percentDecoded(std::string_view text) {
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '%') {
            decoded += text[at];
            continue;
        }
        const auto byte = hexadecimalByte(text.substr(at + 1, 2));
        if (!byte) return std::nullopt;
        decoded += *byte;
        at += 2;
    }
    return decoded;
}

std::string fileURL(const std::filesystem::path& path) {
    std::string url(kFileScheme);
    for (const auto& name : path.relative_path()) url += '/' + percentEncoded(name.native());
    return url;
}

std::filesystem::path pathOfFileURL(const std::string& url) {
    if (!url.starts_with(kFileScheme)) return url;
    return percentDecoded(std::string_view(url).substr(kFileScheme.size())).value_or(url);
}

} // namespace morvelin
