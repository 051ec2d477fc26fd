#include "render/OverlaySprite.h"

#include <algorithm>
#include <cmath>

#include "render/ColorMath.h"
#include "render/PicturePlacement.h"
#include "render/PlaneScaling.h"
#include "render/ResamplingTaps.h"

namespace morvelin {

namespace {

constexpr int kWhole = 1 << 15;

Tile::Pixel pixelOf(const std::uint8_t* bgra) {
    constexpr float kScale = 1.0F / 255;
    return {static_cast<float>(bgra[2]) * kScale, static_cast<float>(bgra[1]) * kScale,
            static_cast<float>(bgra[0]) * kScale, static_cast<float>(bgra[3]) * kScale};
}

void add(const Tile::Pixel& pixel, float weight, Tile::Pixel& sum) {
    sum.red += pixel.red * weight;
    sum.green += pixel.green * weight;
    sum.blue += pixel.blue * weight;
    sum.alpha += pixel.alpha * weight;
}

/// A kernel overshoots at hard outlines: no colour may be stronger than its opacity.
Tile::Pixel limited(Tile::Pixel pixel) {
    pixel.alpha = std::clamp(pixel.alpha, 0.0F, 1.0F);
    for (float* value : {&pixel.red, &pixel.green, &pixel.blue}) *value = std::clamp(*value, 0.0F, pixel.alpha);
    return pixel;
}

/// The taps of one axis of an image that is scaled to `length` pixels from `start` on. They begin `border` samples
/// before the image, where nothing is.
struct ImageTaps {
    int border;
    int samples;
    AxisTaps axis;

    ImageTaps(int count, double start, double length, int first, int outputs)
        : border(2 * static_cast<int>(std::ceil(2 * std::max(count / length, 1.0))) + 2),
          samples(count) {
        const double step = count / length;
        const AxisMapping mapping{(0.5 - start) * step - 0.5 + border, step};
        axis = axisTaps(catmullRomPhases(step), mapping, first, outputs, count + 2 * border);
    }

    /// Calls `use(sample, weight)` for what makes one output.
    template <class Use>
    void forEach(int output, const Use& use) const {
        const int first = axis.source[static_cast<std::size_t>(output)] - border;
        const std::int16_t* weights = axis.weightsOf(output);
        for (int tap = std::max(0, -first); tap < std::min(axis.taps, samples - first); ++tap)
            use(first + tap, static_cast<float>(weights[tap]) / kWeightOne);
    }
};

/// Colours that one sample of a plane stands for: `alpha` and the three premultiplied levels.
struct SampleSum {
    Ycc color{0, 0, 0};
    double alpha = 0;

    void add(const Tile::Pixel& pixel, double weight) {
        const Ycc one = yccFromPremultiplied({pixel.red, pixel.green, pixel.blue}, pixel.alpha);
        color.y += one.y * weight;
        color.cb += one.cb * weight;
        color.cr += one.cr * weight;
        alpha += pixel.alpha * weight;
    }
};

/// The tile at a pixel; nothing beside it. Past the output's sides its end pixels repeat.
void addPixel(const Tile& tile, PixelSize output, int x, int y, double weight, SampleSum& sum) {
    const int px = std::clamp(x, 0, output.width - 1);
    if (px < tile.box.x || px >= tile.box.right() || y < tile.box.y || y >= tile.box.bottom()) return;
    sum.add(tile.row(y)[px - tile.box.x], weight);
}

SampleSum sampleAt(const Tile& tile, PixelSize output, int divisor, int x, int y) {
    SampleSum sum;
    if (divisor == 1) {
        addPixel(tile, output, x, y, 1, sum);
        return sum;
    }
    for (int row = 2 * y; row < 2 * y + 2; ++row) {
        addPixel(tile, output, 2 * x - 1, row, 0.125, sum);
        addPixel(tile, output, 2 * x, row, 0.25, sum);
        addPixel(tile, output, 2 * x + 1, row, 0.125, sum);
    }
    return sum;
}

} // namespace

Tile tileOf(const Image& image, const PixelBox& box) {
    Tile tile(box);
    if (image.isEmpty()) return tile;
    for (std::size_t i = 0; i < tile.pixels.size(); ++i) tile.pixels[i] = pixelOf(image.pixels.data() + 4 * i);
    return tile;
}

Tile scaledTile(const Image& image, const Rectangle& place, PixelSize output) {
    const double stepX = image.size.width / place.width;
    const double stepY = image.size.height / place.height;
    // A cubic reaches two samples, or two pixels where it reduces.
    const double reachX = 2 * std::max(1.0, 1 / stepX);
    const double reachY = 2 * std::max(1.0, 1 / stepY);
    Tile tile(touchedPixels({place.x - reachX, place.y - reachY, place.width + 2 * reachX, place.height + 2 * reachY},
                            output));
    if (tile.box.isEmpty()) return tile;

    const ImageTaps across(image.size.width, place.x, place.width, tile.box.x, tile.box.width);
    const ImageTaps down(image.size.height, place.y, place.height, tile.box.y, tile.box.height);
    Tile rows({0, 0, tile.box.width, image.size.height});
    for (int y = 0; y < image.size.height; ++y) {
        const std::uint8_t* from = image.pixels.data() + static_cast<std::ptrdiff_t>(y) * image.size.width * 4;
        for (int x = 0; x < tile.box.width; ++x)
            across.forEach(x,
                           [&](int sample, float weight) { add(pixelOf(from + 4 * sample), weight, rows.row(y)[x]); });
    }
    for (int y = 0; y < tile.box.height; ++y) {
        Tile::Pixel* to = tile.row(tile.box.y + y);
        down.forEach(y, [&](int sample, float weight) {
            for (int x = 0; x < tile.box.width; ++x) add(rows.row(sample)[x], weight, to[x]);
        });
        std::transform(to, to + tile.box.width, to, limited);
    }
    return tile;
}

void clipTile(const RoundedRectangle& shape, PixelSize output, Tile& tile) {
    Coverage coverage(shape, output.width, 1);
    for (int y = tile.box.y; y < tile.box.bottom(); ++y) {
        const CoverageRow& row = coverage.row(y);
        for (int x = tile.box.x; x < tile.box.right(); ++x) {
            const float share = static_cast<float>(row.weightAt(x)) / static_cast<float>(kCovered);
            Tile::Pixel& pixel = tile.row(y)[x - tile.box.x];
            pixel = {pixel.red * share, pixel.green * share, pixel.blue * share, pixel.alpha * share};
        }
    }
}

OverlaySprite::OverlaySprite(const Tile& tile, PixelSize output, Subsampling subsampling) : m_subsampling(subsampling) {
    const int even = subsampling == Subsampling::Quarter ? 2 : 1;
    if (!tile.box.isEmpty()) {
        // The chroma sample right of the tile also stands for the tile's last column.
        const int left = tile.box.x / even * even;
        const int top = tile.box.y / even * even;
        const int right = (tile.box.right() + 2 * (even - 1)) / even * even;
        const int bottom = (tile.box.bottom() + even - 1) / even * even;
        m_box = PixelBox{left, top, right - left, bottom - top}.intersected({0, 0, output.width, output.height});
    }
    for (int p = 0; p < 3; ++p) {
        Layer& layer = m_layers[static_cast<std::size_t>(p)];
        const int divisor = planeGrid(p, subsampling).divisor;
        layer.samples = planeBox(m_box, planeGrid(p, subsampling));
        for (int y = layer.samples.y; y < layer.samples.bottom(); ++y) {
            for (int x = layer.samples.x; x < layer.samples.right(); ++x) {
                const SampleSum sum = sampleAt(tile, output, divisor, x, y);
                const double level = p == 0 ? sum.color.y : p == 1 ? sum.color.cb : sum.color.cr;
                layer.added.push_back(static_cast<std::int32_t>(std::lround(level * kWhole)));
                layer.kept.push_back(static_cast<std::int32_t>(std::lround((1 - sum.alpha) * kWhole)));
            }
        }
    }
}

void OverlaySprite::blend(const PixelBox& clip, Picture& out) const {
    const PixelBox pixels = m_box.intersected(clip);
    if (pixels.isEmpty()) return;
    for (int p = 0; p < 3; ++p) {
        const Layer& layer = m_layers[static_cast<std::size_t>(p)];
        const PixelBox part = planeBox(pixels, planeGrid(p, m_subsampling));
        for (int y = part.y; y < part.bottom(); ++y) {
            const std::ptrdiff_t offset = static_cast<std::ptrdiff_t>(y - layer.samples.y) * layer.samples.width +
                                          (part.x - layer.samples.x);
            const std::int32_t* added = layer.added.data() + offset;
            const std::int32_t* kept = layer.kept.data() + offset;
            std::uint8_t* row = out.plane(p).row(y) + part.x;
            for (int x = 0; x < part.width; ++x)
                row[x] = static_cast<std::uint8_t>((added[x] + kept[x] * row[x] + kWhole / 2) / kWhole);
        }
    }
}

} // namespace morvelin
