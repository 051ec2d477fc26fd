#include "render/CursorScene.h"

#include <algorithm>

namespace morvelin {

namespace {

CaptureSize captureSizeOf(const CursorShapeTrack& track) {
    return {std::max(track.captureWidth, 1.0), std::max(track.captureHeight, 1.0)};
}

double fractionOf(double length, double whole) { return whole > 0 ? length / whole : 0; }

} // namespace

CursorScene::CursorScene(std::shared_ptr<const CursorShapeLibrary> library, CursorPath path, CursorSettings settings)
    : m_library(std::move(library)),
      m_path(std::move(path)),
      m_settings(settings) {}

CursorScene CursorScene::make(std::span<const CursorEvent> events, std::shared_ptr<const CursorShapeLibrary> library,
                              const CursorSettings& settings) {
    CursorPath path = CursorPath::make(events, settings.smoothing, captureSizeOf(library->track()));
    return {std::move(library), std::move(path), settings};
}

// Every style shows the recorded shape: that is also what a style does whose artwork can't be loaded, and no style has
// artwork yet.
std::optional<CursorSprite> CursorScene::sprite(SourceTime t) const {
    if (!m_settings.isVisible) return std::nullopt;
    const CursorShapeTrack::Shape* shape = m_library->shape(t);
    if (shape == nullptr) return std::nullopt;
    auto image = m_library->image(shape->id);
    const auto position = m_path.position(t);
    if (image == nullptr || image->isEmpty() || !position) return std::nullopt;

    const CaptureSize capture = captureSizeOf(m_library->track());
    const double scale = std::clamp(m_settings.size, 0.5, 3.0);
    return CursorSprite{std::move(image),
                        {fractionOf(shape->hotSpotX, shape->width), fractionOf(shape->hotSpotY, shape->height)},
                        *position,
                        shape->width * scale / capture.width,
                        shape->height * scale / capture.height};
}

} // namespace morvelin
