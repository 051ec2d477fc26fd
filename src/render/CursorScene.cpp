#include "render/CursorScene.h"

#include <algorithm>

namespace morvelin {

namespace {

CaptureSize captureSizeOf(const CursorShapeTrack& track) {
    return {std::max(track.captureWidth, 1.0), std::max(track.captureHeight, 1.0)};
}

double fractionOf(double length, double whole) { return whole > 0 ? length / whole : 0; }

std::shared_ptr<const Image> imageOf(const std::optional<CursorArtwork>& artwork) {
    if (!artwork) return nullptr;
    Image image = artwork->image();
    return image.isEmpty() ? nullptr : std::make_shared<const Image>(std::move(image));
}

} // namespace

CursorScene::CursorScene(std::shared_ptr<const CursorShapeLibrary> library, CursorPath path, CursorSettings settings,
                         std::shared_ptr<const Image> artworkImage)
    : m_library(std::move(library)),
      m_path(std::move(path)),
      m_settings(settings),
      m_artwork(CursorArtwork::of(settings.style)),
      m_artworkImage(std::move(artworkImage)) {}

CursorScene CursorScene::make(std::span<const CursorEvent> events, std::shared_ptr<const CursorShapeLibrary> library,
                              const CursorSettings& settings) {
    CursorPath path = CursorPath::make(events, settings.smoothing, captureSizeOf(library->track()));
    return {std::move(library), std::move(path), settings, imageOf(CursorArtwork::of(settings.style))};
}

std::optional<CursorSprite> CursorScene::sprite(SourceTime t) const {
    if (!m_settings.isVisible) return std::nullopt;
    const CursorShapeTrack::Shape* shape = m_library->shape(t);
    if (shape == nullptr) return std::nullopt;
    const auto position = m_path.position(t);
    if (!position) return std::nullopt;

    const CaptureSize capture = captureSizeOf(m_library->track());
    const double scale = std::clamp(m_settings.size, 0.5, 3.0);
    // Only the arrow changes with the style: a text cursor or a hand tells what the program below offers.
    if (shape->kind == CursorShapeTrack::Kind::Arrow && m_artwork && m_artworkImage) {
        const double height = kCursorArtworkHeight * scale;
        const double width = height * m_artworkImage->size.width / m_artworkImage->size.height;
        return CursorSprite{m_artworkImage, m_artwork->hotSpot, *position, width / capture.width,
                            height / capture.height};
    }
    auto image = m_library->image(shape->id);
    if (image == nullptr || image->isEmpty()) return std::nullopt;
    return CursorSprite{std::move(image),
                        {fractionOf(shape->hotSpotX, shape->width), fractionOf(shape->hotSpotY, shape->height)},
                        *position,
                        shape->width * scale / capture.width,
                        shape->height * scale / capture.height};
}

} // namespace morvelin
