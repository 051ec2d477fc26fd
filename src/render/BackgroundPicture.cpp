#include "render/BackgroundPicture.h"

#include <algorithm>
#include <cmath>

#include "media/ImageDecoding.h"
#include "storage/BackgroundImage.h"

namespace morvelin {

namespace {

/// One component of all pixels, premultiplied as they are: that is how they look on black.
DeepPlane componentOf(const Image& image, std::size_t component) {
    DeepPlane plane(image.size.width, image.size.height);
    const std::uint8_t* pixel = image.pixels.data();
    for (int y = 0; y < image.size.height; ++y) {
        std::int16_t* row = plane.row(y);
        for (int x = 0; x < image.size.width; ++x, pixel += 4)
            row[x] = deepSample(levelsOf({pixel[2] / 255.0, pixel[1] / 255.0, pixel[0] / 255.0})[component]);
    }
    return plane;
}

/// The scale at which an image leaves no part of the output uncovered.
double coveringScale(PixelSize image, PixelSize output) {
    return std::max(static_cast<double>(output.width) / image.width, static_cast<double>(output.height) / image.height);
}

AxisTaps coveringTaps(const SampleGrid& grid, int samples, int imageLength, int outputLength, double scale) {
    // Whole pixels, so that a picture of the right size stays as sharp as it is.
    const double offset = std::round((outputLength - imageLength * scale) / 2);
    const AxisMapping mapping = axisMapping(grid, SampleGrid{}, offset, scale);
    return axisTaps(catmullRomPhases(std::max(1.0, mapping.step)), mapping, 0, samples, imageLength);
}

} // namespace

std::shared_ptr<const Image> loadBackgroundImage(const Background& background,
                                                 const std::filesystem::path& bundleFolder, PixelSize output) {
    if (background.type != BackgroundType::Image) return nullptr;
    const auto file = backgroundImagePath(bundleFolder, background);
    auto decoded = file ? decodeImage(*file, output) : std::nullopt;
    return decoded ? std::make_shared<const Image>(std::move(decoded->image)) : nullptr;
}

void paintImage(const Image& image, Subsampling subsampling, DeepPlanes& planes) {
    const PixelSize output{planes[0].width(), planes[0].height()};
    const double scale = coveringScale(image.size, output);
    for (int p = 0; p < 3; ++p) {
        const auto index = static_cast<std::size_t>(p);
        const PlaneGrid grid = planeGrid(p, subsampling);
        DeepPlane& plane = planes[index];
        const PlaneTaps taps{
            rowTaps(coveringTaps(grid.x, plane.width(), image.size.width, output.width, scale), SampleWidth::Deep),
            coveringTaps(grid.y, plane.height(), image.size.height, output.height, scale)};
        const DeepPlane source = componentOf(image, index);
        const auto low = static_cast<std::int16_t>(16 * kDeepOne);
        const auto high = static_cast<std::int16_t>((p == 0 ? 235 : 240) * kDeepOne);
        scaleDeepPlane(source, taps, plane, [&](int y, const std::int16_t* row) {
            std::transform(row, row + plane.width(), plane.row(y),
                           [&](std::int16_t sample) { return std::clamp(sample, low, high); });
        });
    }
}

} // namespace morvelin
