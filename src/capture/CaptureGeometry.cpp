#include "capture/CaptureGeometry.h"

#include <cmath>

namespace morvelin {

namespace {

int evenSide(double side) { return std::max(static_cast<int>(std::lround(side)), 2) & ~1; }

const Display* find(const DisplayTarget& target, std::span<const Display> displays) {
    for (const Display& display : displays)
        if (target.id.empty() ? display.isPrimary : display.id == target.id) return &display;
    return target.id.empty() && !displays.empty() ? &displays.front() : nullptr;
}

} // namespace

PixelSize movieSizeFor(PixelSize content) {
    const double longest = std::max(content.width, content.height);
    const double scale = std::min(1.0, kMaxCaptureDimension / std::max(longest, 1.0));
    return {evenSide(content.width * scale), evenSide(content.height * scale)};
}

std::int64_t captureBitRate(PixelSize size) {
    const double wanted = 0.15 * 60 * size.width * size.height;
    return std::llround(std::clamp(wanted, 12'000'000.0, 120'000'000.0));
}

Result<CaptureGeometry, CaptureError> resolveTarget(const CaptureTarget& target, std::span<const Display> displays) {
    const Display* display = std::visit([&](const DisplayTarget& chosen) { return find(chosen, displays); }, target);
    if (display == nullptr || display->frame.width < 2 || display->frame.height < 2)
        return failure(CaptureError{CaptureError::Kind::DisplayNotFound, {}});

    CaptureGeometry geometry{.area = display->frame,
                             .movieSize = movieSizeFor({display->frame.width, display->frame.height}),
                             .pointPixelScale = display->pointPixelScale,
                             .displayID = display->id};
    geometry.area.width &= ~1;
    geometry.area.height &= ~1;
    return geometry;
}

} // namespace morvelin
