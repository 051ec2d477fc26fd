#include "capture/CaptureGeometry.h"

#include <algorithm>
#include <cmath>

#include "core/base/Text.h"

namespace morvelin {

namespace {

int evenSide(double side) { return std::max(static_cast<int>(std::lround(side)), 2) & ~1; }

const Display* find(const std::string& displayID, std::span<const Display> displays) {
    for (const Display& display : displays)
        if (displayID.empty() ? display.isPrimary : display.id == displayID) return &display;
    return displayID.empty() && !displays.empty() ? &displays.front() : nullptr;
}

const Display* displayAt(double x, double y, std::span<const Display> displays) {
    for (const Display& display : displays) {
        const PixelBox& frame = display.frame;
        if (x >= frame.x && x < frame.right() && y >= frame.y && y < frame.bottom()) return &display;
    }
    return nullptr;
}

/// The display that holds the rectangle's middle, when the rectangle counts from the desktop's corner.
const Display* displayAround(const PointRect& rect, std::span<const Display> displays) {
    for (const Display& display : displays) {
        const double scale = display.pointPixelScale;
        const double x = (rect.x + rect.width / 2) * scale;
        const double y = (rect.y + rect.height / 2) * scale;
        if (displayAt(x, y, {&display, 1}) != nullptr) return &display;
    }
    return nullptr;
}

PixelBox pixelBox(const PointRect& rect, double scale) {
    const auto pixel = [scale](double points) { return static_cast<int>(std::lround(points * scale)); };
    const int x = pixel(rect.x);
    const int y = pixel(rect.y);
    return {x, y, pixel(rect.x + rect.width) - x, pixel(rect.y + rect.height) - y};
}

/// Numbers that stand for a place on some desktop; anything else would overflow a pixel.
bool isReasonable(const PointRect& rect) {
    constexpr double kMost = 1e6;
    return std::abs(rect.x) < kMost && std::abs(rect.y) < kMost && rect.width > 0 && rect.width < kMost &&
           rect.height > 0 && rect.height < kMost;
}

CaptureGeometry geometryOf(PixelBox area, double pointPixelScale) {
    area.width &= ~1;
    area.height &= ~1;
    CaptureGeometry geometry;
    geometry.area = area;
    geometry.movieSize = movieSizeFor({area.width, area.height});
    geometry.pointPixelScale = pointPixelScale;
    return geometry;
}

std::unexpected<CaptureError> refused(CaptureError::Kind kind) { return failure(CaptureError{kind, {}}); }

Result<CaptureGeometry, CaptureError> resolve(const DisplayTarget& target, const CaptureChoices& choices) {
    const Display* display = find(target.id, choices.displays);
    if (display == nullptr || display->frame.width < 2 || display->frame.height < 2)
        return refused(CaptureError::Kind::DisplayNotFound);
    CaptureGeometry geometry = geometryOf(display->frame, display->pointPixelScale);
    geometry.displayID = display->id;
    return geometry;
}

Result<CaptureGeometry, CaptureError> resolve(const WindowTarget& target, const CaptureChoices& choices) {
    const DesktopWindow* window = findWindow(target, choices.windows);
    if (window == nullptr || window->frame.width < 2 || window->frame.height < 2)
        return refused(CaptureError::Kind::WindowNotFound);
    const PixelBox& frame = window->frame;
    const Display* display = displayAt(frame.x + frame.width / 2.0, frame.y + frame.height / 2.0, choices.displays);
    if (display == nullptr) display = find("", choices.displays);
    CaptureGeometry geometry = geometryOf(frame, display != nullptr ? display->pointPixelScale : 1);
    geometry.windowID = window->id;
    return geometry;
}

Result<CaptureGeometry, CaptureError> resolve(const AreaTarget& target, const CaptureChoices& choices) {
    if (!isReasonable(target.rect)) return refused(CaptureError::Kind::InvalidCropRect);
    const bool isOnNamedDisplay = !target.displayID.empty();
    const Display* display = isOnNamedDisplay ? find(target.displayID, choices.displays)
                                              : displayAround(target.rect, choices.displays);
    if (display == nullptr)
        return refused(isOnNamedDisplay ? CaptureError::Kind::DisplayNotFound : CaptureError::Kind::InvalidCropRect);
    PixelBox area = pixelBox(target.rect, display->pointPixelScale);
    if (isOnNamedDisplay) {
        area.x += display->frame.x;
        area.y += display->frame.y;
    }
    if (area.width < 2 || area.height < 2 || area.united(display->frame) != display->frame)
        return refused(CaptureError::Kind::InvalidCropRect);
    CaptureGeometry geometry = geometryOf(area, display->pointPixelScale);
    geometry.displayID = display->id;
    return geometry;
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

Result<CaptureGeometry, CaptureError> resolveTarget(const CaptureTarget& target, const CaptureChoices& choices) {
    return std::visit([&](const auto& chosen) { return resolve(chosen, choices); }, target);
}

const DesktopWindow* findWindow(const WindowTarget& target, std::span<const DesktopWindow> windows) {
    if (target.id)
        if (const auto found = std::ranges::find(windows, *target.id, &DesktopWindow::id); found != windows.end())
            return &*found;
    const std::string wanted = caseFolded(trimmed(target.title));
    if (wanted.empty()) return nullptr;
    const DesktopWindow* containing = nullptr;
    for (const DesktopWindow& window : windows) {
        const std::string title = caseFolded(trimmed(window.title));
        if (title == wanted) return &window;
        if (containing == nullptr && title.contains(wanted)) containing = &window;
    }
    return containing;
}

} // namespace morvelin
