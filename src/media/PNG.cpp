#include "media/PNG.h"

#include <cstring>

#include <fmt/core.h>
#include <png.h>

namespace morvelin {

namespace {

/// Larger than any screen; a damaged or hostile file can ask for far more.
constexpr std::uint32_t kLargestSide = 16'384;

/// libpng's image, freed when it goes.
class PNGImage {
public:
    PNGImage() {
        std::memset(&m_image, 0, sizeof m_image);
        m_image.version = PNG_IMAGE_VERSION;
    }
    PNGImage(const PNGImage&) = delete;
    PNGImage& operator=(const PNGImage&) = delete;
    ~PNGImage() { png_image_free(&m_image); }

    png_image* operator->() { return &m_image; }
    png_image* get() { return &m_image; }

private:
    png_image m_image;
};

std::uint8_t premultiplied(unsigned channel, unsigned alpha) {
    return static_cast<std::uint8_t>((channel * alpha + 127) / 255);
}

std::uint8_t straight(unsigned channel, unsigned alpha) {
    if (alpha == 0) return 0;
    return static_cast<std::uint8_t>(std::min(255u, (channel * 255 + alpha / 2) / alpha));
}

template <class Operation>
void changeColours(std::vector<std::uint8_t>& pixels, Operation operation) {
    for (std::size_t index = 0; index + 3 < pixels.size(); index += 4)
        if (const unsigned alpha = pixels[index + 3]; alpha != 255)
            for (std::size_t channel = index; channel < index + 3; ++channel)
                pixels[channel] = operation(pixels[channel], alpha);
}

bool isOpaque(const Image& image) {
    for (std::size_t index = 3; index < image.pixels.size(); index += 4)
        if (image.pixels[index] != 255) return false;
    return true;
}

/// The pixels as libpng takes them: straight alpha, or none where there is nothing to see through.
std::vector<std::uint8_t> writtenPixels(const Image& image, bool isWithoutAlpha) {
    std::vector<std::uint8_t> pixels = image.pixels;
    if (!isWithoutAlpha) {
        changeColours(pixels, straight);
        return pixels;
    }
    const std::size_t count = pixels.size() / 4;
    for (std::size_t index = 0; index < count; ++index) {
        const std::uint8_t* from = image.pixels.data() + 4 * index;
        std::uint8_t* to = pixels.data() + 3 * index;
        to[0] = from[0];
        to[1] = from[1];
        to[2] = from[2];
    }
    pixels.resize(3 * count);
    return pixels;
}

std::unexpected<PNGError> readingError(PNGImage& image) {
    return failure(PNGError{fmt::format("The PNG image could not be read: {}.", image->message)});
}

std::unexpected<PNGError> writingError(PNGImage& image) {
    return failure(PNGError{fmt::format("The PNG image could not be made: {}.", image->message)});
}

} // namespace

Result<std::vector<std::uint8_t>, PNGError> encodePNG(const Image& image) {
    if (image.isEmpty()) return failure(PNGError{"An image without pixels can't be made a PNG image."});
    const bool isWithoutAlpha = isOpaque(image);
    const std::vector<std::uint8_t> pixels = writtenPixels(image, isWithoutAlpha);

    PNGImage png;
    png->width = static_cast<png_uint_32>(image.size.width);
    png->height = static_cast<png_uint_32>(image.size.height);
    png->format = isWithoutAlpha ? PNG_FORMAT_BGR : PNG_FORMAT_BGRA;
    png->flags = PNG_IMAGE_FLAG_FAST; // a third of the time for a seventh more bytes
    std::vector<std::uint8_t> bytes(PNG_IMAGE_PNG_SIZE_MAX(*png.get()));
    png_alloc_size_t size = bytes.size();
    if (png_image_write_to_memory(png.get(), bytes.data(), &size, 0, pixels.data(), 0, nullptr) == 0)
        return writingError(png);
    bytes.resize(size);
    return bytes;
}

Result<Image, PNGError> decodePNG(std::span<const std::uint8_t> bytes) {
    PNGImage png;
    if (png_image_begin_read_from_memory(png.get(), bytes.data(), bytes.size()) == 0) return readingError(png);
    if (png->width > kLargestSide || png->height > kLargestSide)
        return failure(PNGError{fmt::format("A PNG image of {} × {} pixels is too large.", png->width, png->height)});
    png->format = PNG_FORMAT_BGRA;
    Image image{{static_cast<int>(png->width), static_cast<int>(png->height)},
                std::vector<std::uint8_t>(PNG_IMAGE_SIZE(*png.get()))};
    if (png_image_finish_read(png.get(), nullptr, image.pixels.data(), 0, nullptr) == 0) return readingError(png);
    changeColours(image.pixels, premultiplied);
    return image;
}

} // namespace morvelin
