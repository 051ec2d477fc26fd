#include "media/FFmpegImageProbe.h"

#include <array>
#include <fstream>

#include <fcntl.h>

#include <fmt/format.h>

#include "core/base/OwnedDescriptor.h"

namespace morvelin {

namespace {

constexpr std::uintmax_t kMostBytes = std::uintmax_t(64) << 20;
constexpr int kMostPixels = 16384;

/// FFmpeg opens much that is no image, plain text among it, so the first bytes have to say what the file is.
struct Signature {
    std::size_t offset;
    std::string_view bytes;
    const char* extension;
};
constexpr Signature kSignatures[] = {{0, "\x89PNG\r\n\x1a\n", ".png"},
                                     {0, "\xff\xd8\xff", ".jpg"},
                                     {8, "WEBP", ".webp"},
                                     {4, "ftypheic", ".heic"},
                                     {4, "ftypheix", ".heic"},
                                     {4, "ftypmif1", ".heic"},
                                     {4, "ftypavif", ".avif"},
                                     {0, "GIF8", ".gif"},
                                     {0, "BM", ".bmp"},
                                     {0, std::string_view("II*\0", 4), ".tiff"},
                                     {0, std::string_view("MM\0*", 4), ".tiff"}};

const char* extensionOf(const std::filesystem::path& file) {
    std::array<char, 16> head{};
    std::ifstream(file, std::ios::binary).read(head.data(), head.size());
    const std::string_view bytes(head.data(), head.size());
    for (const Signature& signature : kSignatures)
        if (bytes.substr(signature.offset).starts_with(signature.bytes)) return signature.extension;
    return nullptr;
}

} // namespace

std::optional<ImageFileProbe::Image> FFmpegImageProbe::probe(const std::filesystem::path& file) const {
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error) || std::filesystem::file_size(file, error) > kMostBytes)
        return std::nullopt;
    const char* extension = extensionOf(file);
    if (extension == nullptr) return std::nullopt;
    // Under this name the reader goes by what the file holds: by an image's extension, FFmpeg takes it for a numbered
    // series, which can't be read twice.
    const OwnedDescriptor opened(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
    const auto reader = m_readers.open(fmt::format("/proc/self/fd/{}", opened.get()));
    if (!reader) return std::nullopt;
    const PixelSize size = (*reader)->properties().size;
    if (size.width > kMostPixels || size.height > kMostPixels) return std::nullopt;
    if (!(*reader)->frameAt((*reader)->properties().start)) return std::nullopt;
    return Image{size, extension};
}

} // namespace morvelin
