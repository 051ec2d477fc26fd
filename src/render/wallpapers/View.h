// Where the pixels of an output lie in a wallpaper's scene. Lengths are in heights of the output: 0 is the top and the
// middle, 1 the bottom, so that a wider output shows more at its sides and a circle stays one.
#pragma once

#include <cmath>
#include <span>

#include "platform/Picture.h"
#include "render/wallpapers/Light.h"

namespace morvelin::wallpapers {

struct View {
    PixelSize size;
    float pixel = 1;     ///< the side of one
    float halfWidth = 1; ///< from the middle to either side

    explicit View(PixelSize output)
        : size(output),
          pixel(1 / static_cast<float>(output.height)),
          halfWidth(0.5F * pixel * static_cast<float>(output.width)) {}

    [[nodiscard]] float x(int column) const { return (static_cast<float>(column) + 0.5F) * pixel - halfWidth; }
    [[nodiscard]] float y(int row) const { return (static_cast<float>(row) + 0.5F) * pixel; }
    /// The x at a share of the width, 0 at the left.
    [[nodiscard]] float across(float share) const { return (2 * share - 1) * halfWidth; }
};

/// Sets each pixel of a row to what `lightAt(x, y)` gives.
template <class LightAt>
void paintPoints(const View& view, int row, std::span<Light> pixels, const LightAt& lightAt) {
    const float y = view.y(row);
    for (std::size_t column = 0; column < pixels.size(); ++column)
        pixels[column] = lightAt(view.x(static_cast<int>(column)), y);
}

/// 0 up to `from`, 1 beyond `to`, and a soft slope between them.
[[nodiscard]] inline float rise(float from, float to, float value) {
    const float t = std::clamp((value - from) / (to - from), 0.0F, 1.0F);
    return t * t * (3 - 2 * t);
}

/// 1 at 0, falling off as a bell of that width.
[[nodiscard]] inline float bell(float distance, float width) {
    const float d = distance / width;
    return std::exp(-d * d);
}

/// The share of a pixel that lies beyond an edge, `distance` being from the edge to the pixel's middle.
[[nodiscard]] inline float edge(float distance, float pixel) { return std::clamp(distance / pixel + 0.5F, 0.0F, 1.0F); }

} // namespace morvelin::wallpapers
