#include "render/StageGeometry.h"

#include <algorithm>
#include <cmath>

#include "render/CompositionInstruction.h"
#include "timeline/ClampCenter.h"

namespace morvelin {

namespace {

/// Corners are never rounder than this part of the frame's smaller side, whatever the project asks for.
constexpr double kLargestCornerRadius = 0.04;
/// A picture with a side below this many pixels is not seen.
constexpr double kSmallestPicture = 0.5;
/// At this zoom one pixel of any recording fills the output.
constexpr double kLargestZoom = 65536;
/// Steps of zoom and pan: 1/256 pixel at the far side of a 4096-pixel stage.
constexpr double kZoomSteps = 1 << 20;
constexpr double kOffsetSteps = 1 << 8;

double roundedTo(double value, double steps) { return std::round(value * steps) / steps; }

double usableZoom(double zoom) {
    if (!(zoom > 1)) return 1;
    return roundedTo(std::min(zoom, kLargestZoom), kZoomSteps);
}

/// How far the magnified stage is moved along one axis so that `center` (a fraction of the picture) is in the middle.
double offsetFor(double center, double zoom, double videoStart, double videoLength, double outputLength) {
    const double seen = outputLength / zoom;
    const double middle = std::isfinite(center) ? center : 0.5;
    const double pan = std::clamp(videoStart + middle * videoLength - seen / 2, 0.0, outputLength - seen);
    return roundedTo(pan * zoom, kOffsetSteps);
}

Rectangle magnified(const Rectangle& rect, const Camera& camera) {
    return {rect.x * camera.zoom - camera.offsetX, rect.y * camera.zoom - camera.offsetY, rect.width * camera.zoom,
            rect.height * camera.zoom};
}

} // namespace

Rectangle Rectangle::intersected(const Rectangle& other) const {
    const double left = std::max(x, other.x);
    const double top = std::max(y, other.y);
    return {left, top, std::max(0.0, std::min(right(), other.right()) - left),
            std::max(0.0, std::min(bottom(), other.bottom()) - top)};
}

Rectangle StageGeometry::outputRectangle(const NormalizedRect& rect) const {
    const NormalizedPoint corner = outputPoint(rect.x, rect.y);
    return {corner.x, corner.y, rect.width * frameRect.width, rect.height * frameRect.height};
}

Rectangle videoRectangle(PixelSize video, PixelSize output, double padding) {
    const double width = output.width;
    const double height = output.height;
    const bool hasArea = video.width > 0 && video.height > 0;
    const double aspect = hasArea ? static_cast<double>(video.width) / video.height : width / std::max(height, 1.0);
    const double pad = padding > 0 ? padding * std::min(width, height) : 0;
    const double areaWidth = std::max(1.0, width - 2 * pad);
    const double areaHeight = std::max(1.0, height - 2 * pad);
    const bool fillsHeight = aspect <= areaWidth / areaHeight;
    const double pictureWidth = fillsHeight ? areaHeight * aspect : areaWidth;
    const double pictureHeight = fillsHeight ? areaHeight : areaWidth / aspect;
    return {(width - pictureWidth) / 2, (height - pictureHeight) / 2, pictureWidth, pictureHeight};
}

StageGeometry stageGeometry(const CompositionInstruction& instruction, const DenseZoomFrame& view) {
    const PixelSize output = instruction.outputSize;
    StageGeometry stage;
    stage.videoRect = videoRectangle(instruction.videoNaturalSize, output, instruction.padding);

    const NormalizedPoint center = clampCenter({view.centerX, view.centerY}, view.zoom, instruction.padding);
    stage.camera.zoom = usableZoom(view.zoom);
    stage.camera.offsetX = offsetFor(center.x, stage.camera.zoom, stage.videoRect.x, stage.videoRect.width,
                                     output.width);
    stage.camera.offsetY = offsetFor(center.y, stage.camera.zoom, stage.videoRect.y, stage.videoRect.height,
                                     output.height);
    stage.frameRect = magnified(stage.videoRect, stage.camera);

    if (instruction.cornerRadius > 0)
        stage.cornerRadius = stage.frameRect.smallerSide() * std::min(instruction.cornerRadius, kLargestCornerRadius);

    const Rectangle visible = stage.frameRect.intersected(
        {0, 0, static_cast<double>(output.width), static_cast<double>(output.height)});
    const bool hasArea = instruction.videoNaturalSize.width > 0 && instruction.videoNaturalSize.height > 0;
    stage.showsPicture = hasArea && visible.width > kSmallestPicture && visible.height > kSmallestPicture;
    stage.castsShadow = stage.showsPicture && instruction.shadowIntensity > 0;
    return stage;
}

} // namespace morvelin
