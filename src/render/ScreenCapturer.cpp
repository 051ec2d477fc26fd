#include "render/ScreenCapturer.h"

#include <cmath>
#include <cstring>

#include "media/PNG.h"
#include "render/OverlaySprite.h"

namespace morvelin {

namespace {

constexpr Seconds kPatience{2};

/// The pointer as it shows at a moment, on the desktop.
struct ShownPointer {
    PointerShape shape;
    DesktopPoint location;
};

std::optional<ShownPointer> shownPointer(PointerSource& source) {
    const auto location = source.location();
    auto shape = source.shape();
    if (!location || !shape || shape->image.isEmpty()) return std::nullopt;
    return ShownPointer{std::move(*shape), *location};
}

Image copyOf(const ScreenPixels& pixels) {
    constexpr std::size_t kBytesPerPixel = 4;
    const std::size_t rowBytes = static_cast<std::size_t>(pixels.size.width) * kBytesPerPixel;
    Image image{pixels.size, std::vector<std::uint8_t>(rowBytes * static_cast<std::size_t>(pixels.size.height))};
    for (int y = 0; y < pixels.size.height; ++y)
        std::memcpy(image.pixels.data() + static_cast<std::size_t>(y) * rowBytes, pixels.data + y * pixels.stride,
                    rowBytes);
    for (std::size_t alpha = 3; alpha < image.pixels.size(); alpha += kBytesPerPixel) image.pixels[alpha] = 255;
    return image;
}

std::uint8_t blended(std::uint8_t below, float colour, float alpha) {
    const float value = static_cast<float>(below) * (1 - alpha) + colour * 255;
    return static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0F, 255.0F)));
}

void draw(const ShownPointer& pointer, const PixelBox& area, Image& still) {
    const PointerShape& shape = pointer.shape;
    const Rectangle place{pointer.location.x - shape.hotSpotX - area.x, pointer.location.y - shape.hotSpotY - area.y,
                          shape.width, shape.height};
    const Tile tile = scaledTile(shape.image, place, still.size);
    for (int y = tile.box.y; y < tile.box.bottom(); ++y) {
        const Tile::Pixel* from = tile.row(y);
        std::uint8_t* to = still.pixels.data() + 4 * (static_cast<std::ptrdiff_t>(y) * still.size.width + tile.box.x);
        for (int x = 0; x < tile.box.width; ++x, ++from, to += 4) {
            to[0] = blended(to[0], from->blue, from->alpha);
            to[1] = blended(to[1], from->green, from->alpha);
            to[2] = blended(to[2], from->red, from->alpha);
        }
    }
}

ScreenCaptureError captureFailed(std::string reason) { return {ScreenCaptureError::CaptureFailed{std::move(reason)}}; }

Result<Image, ScreenCaptureError> grab(ScreenSource& screen, const PixelBox& area) {
    ScreenStreamOptions options;
    options.area = area;
    auto stream = screen.open(options);
    if (!stream) return failure(captureFailed(stream.error().description()));
    Image still;
    const auto taken = (*stream)->next(kPatience, [&](const ScreenFrame& frame) { still = copyOf(frame.pixels); });
    if (!taken) return failure(captureFailed(taken.error().description()));
    if (still.isEmpty()) return failure(captureFailed("The desktop does not answer."));
    return still;
}

} // namespace

Task<Result<ScreenCapturer::Shot, ScreenCaptureError>> ScreenCapturer::capture(PointerSpace space) {
    const auto pointer = shownPointer(m_pointer);
    co_return co_await onWorker(m_loop, [&]() -> Result<Shot, ScreenCaptureError> {
        auto still = grab(m_screen, space.rect);
        if (!still) return passOn(std::move(still));
        if (pointer) draw(*pointer, space.rect, *still);
        auto png = encodePNG(*still);
        if (!png) return failure(ScreenCaptureError(ScreenCaptureError::EncodingFailed{}));
        return Shot{std::move(*png), still->size, space};
    });
}

} // namespace morvelin
