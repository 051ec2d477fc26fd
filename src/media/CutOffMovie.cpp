#include "media/CutOffMovie.h"

#include <array>
#include <fstream>
#include <string_view>

namespace morvelin {

namespace {

constexpr std::uint64_t kShortHeader = 8;
constexpr std::uint64_t kLongHeader = 16;

std::uint64_t bigEndian(std::string_view bytes) {
    std::uint64_t value = 0;
    for (const char byte : bytes) value = value << 8 | static_cast<unsigned char>(byte);
    return value;
}

} // namespace

std::optional<std::uint64_t> startOfCutOffFragment(const std::filesystem::path& movie) {
    std::error_code error;
    const std::uint64_t end = std::filesystem::file_size(movie, error);
    std::ifstream file(movie, std::ios::binary);
    if (error || !file) return std::nullopt;

    for (std::uint64_t start = 0; start < end;) {
        std::array<char, kLongHeader> bytes{};
        file.seekg(static_cast<std::streamoff>(start));
        file.read(bytes.data(), bytes.size());
        const auto held = static_cast<std::uint64_t>(file.gcount());
        file.clear();
        const std::string_view header(bytes.data(), bytes.size());
        if (held < kShortHeader) return start;
        std::uint64_t size = bigEndian(header.substr(0, 4));
        if (size == 1 && held >= kLongHeader) size = bigEndian(header.substr(8, 8));
        const bool isFragment = header.substr(4, 4) == "moof";
        if (size < kShortHeader || size > end - start) return isFragment ? std::optional(start) : std::nullopt;
        start += size;
    }
    return std::nullopt;
}

} // namespace morvelin
