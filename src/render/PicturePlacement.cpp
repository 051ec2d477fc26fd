#include "render/PicturePlacement.h"

#include <algorithm>
#include <cmath>

namespace morvelin {

AxisMapping PicturePlacement::mappingX(int plane) const {
    return axisMapping(outputGrid(plane).x, planeGrid(plane, pictureSubsampling).x, frame.x, scaleX());
}

AxisMapping PicturePlacement::mappingY(int plane) const {
    return axisMapping(outputGrid(plane).y, planeGrid(plane, pictureSubsampling).y, frame.y, scaleY());
}

PixelSize PicturePlacement::pictureSamples(int plane) const {
    const PixelBox box = planeBox({0, 0, picture.width, picture.height}, planeGrid(plane, pictureSubsampling));
    return {box.width, box.height};
}

PixelBox PicturePlacement::visibleSamples(int plane) const {
    constexpr double kSpare = 2; // a chroma sample at an edge also stands for pixels beside it
    const Rectangle grown{frame.x - kSpare, frame.y - kSpare, frame.width + 2 * kSpare, frame.height + 2 * kSpare};
    return planeBox(touchedPixels(grown, output), outputGrid(plane));
}

PixelBox PicturePlacement::outputBox(const PixelBox& box, double reach) const {
    const double reachX = reach * scaleX() + 1;
    const double reachY = reach * scaleY() + 1;
    return touchedPixels({frame.x + box.x * scaleX() - reachX, frame.y + box.y * scaleY() - reachY,
                          box.width * scaleX() + 2 * reachX, box.height * scaleY() + 2 * reachY},
                         output);
}

PixelBox touchedPixels(const Rectangle& rect, PixelSize output) {
    const auto limited = [](double value, int high) {
        return static_cast<int>(std::clamp(value, 0.0, static_cast<double>(high)));
    };
    const int left = limited(std::floor(rect.x), output.width);
    const int top = limited(std::floor(rect.y), output.height);
    return {left, top, limited(std::ceil(rect.right()), output.width) - left,
            limited(std::ceil(rect.bottom()), output.height) - top};
}

} // namespace morvelin
