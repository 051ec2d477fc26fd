#include "capture/CursorSilhouette.h"

#include <cmath>

namespace morvelin {

namespace {

constexpr int kAlphaThreshold = 96;

int alphaAt(const Image& image, int x, int y) {
    const auto index = static_cast<std::size_t>(y) * static_cast<std::size_t>(image.size.width) +
                       static_cast<std::size_t>(x);
    return image.pixels[index * 4 + 3];
}

/// The box around everything that is not wholly transparent; the whole image where all of it is.
PixelBox visibleBox(const Image& image) {
    PixelBox box;
    for (int y = 0; y < image.size.height; ++y)
        for (int x = 0; x < image.size.width; ++x)
            if (alphaAt(image, x, y) > 0) box = box.united({x, y, 1, 1});
    return box.isEmpty() ? PixelBox{0, 0, image.size.width, image.size.height} : box;
}

/// A stretch of pixels on one axis that a cell covers, some of them in part.
struct Span {
    double from = 0;
    double to = 0;

    [[nodiscard]] int firstPixel() const { return static_cast<int>(std::floor(from)); }
    [[nodiscard]] int endPixel() const { return static_cast<int>(std::ceil(to)); }
    [[nodiscard]] double coverage(int pixel) const { return std::min(to, pixel + 1.0) - std::max(from, 1.0 * pixel); }
};

Span cellSpan(int cell, int origin, int length) {
    const double width = static_cast<double>(length) / CursorSilhouette::kSide;
    return {origin + cell * width, origin + (cell + 1) * width};
}

double meanAlpha(const Image& image, const Span& columns, const Span& rows) {
    double sum = 0;
    const int right = std::min(columns.endPixel(), image.size.width);
    const int bottom = std::min(rows.endPixel(), image.size.height);
    for (int y = rows.firstPixel(); y < bottom; ++y)
        for (int x = columns.firstPixel(); x < right; ++x)
            sum += alphaAt(image, x, y) * columns.coverage(x) * rows.coverage(y);
    return sum / ((columns.to - columns.from) * (rows.to - rows.from));
}

} // namespace

CursorSilhouette CursorSilhouette::of(const Image& image) {
    CursorSilhouette silhouette;
    if (image.isEmpty()) return silhouette;
    const PixelBox box = visibleBox(image);
    for (int row = 0; row < kSide; ++row)
        for (int column = 0; column < kSide; ++column)
            silhouette.cells[static_cast<std::size_t>(row * kSide + column)] =
                meanAlpha(image, cellSpan(column, box.x, box.width), cellSpan(row, box.y, box.height)) >
                kAlphaThreshold;
    return silhouette;
}

double CursorSilhouette::likeness(const CursorSilhouette& other) const {
    const std::size_t either = (cells | other.cells).count();
    if (either == 0) return 0;
    return static_cast<double>((cells & other.cells).count()) / static_cast<double>(either);
}

} // namespace morvelin
