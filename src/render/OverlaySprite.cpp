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

/// A pixel's premultiplied levels.
struct LevelPixel {
    float y = 0;
    float cb = 0;
    float cr = 0;
    float alpha = 0;

    void add(const LevelPixel& other, float weight) {
        y += other.y * weight;
        cb += other.cb * weight;
        cr += other.cr * weight;
        alpha += other.alpha * weight;
    }
};

LevelPixel levelsOf(const Tile::Pixel& pixel) {
    const Ycc levels = yccFromPremultiplied({pixel.red, pixel.green, pixel.blue}, pixel.alpha);
    return {static_cast<float>(levels.y), static_cast<float>(levels.cb), static_cast<float>(levels.cr), pixel.alpha};
}

/// A row of a tile from `first` on; nothing beside it. Past the output's sides its end pixels repeat.
void readRow(const Tile& tile, PixelSize output, int first, int y, std::vector<LevelPixel>& row) {
    std::ranges::fill(row, LevelPixel{});
    if (y < tile.box.y || y >= tile.box.bottom()) return;
    for (std::size_t i = 0; i < row.size(); ++i) {
        const int x = std::clamp(first + static_cast<int>(i), 0, output.width - 1);
        if (x >= tile.box.x && x < tile.box.right()) row[i] = levelsOf(tile.row(y)[x - tile.box.x]);
    }
}

/// Adds a row to what the chroma samples of two rows hold, each at its pixel's place.
void addToChroma(const std::vector<LevelPixel>& row, int y, std::vector<LevelPixel>& chroma) {
    if (y % 2 == 0) std::ranges::fill(chroma, LevelPixel{});
    for (std::size_t x = 1; x + 1 < row.size(); x += 2) {
        chroma[x].add(row[x - 1], 0.125F);
        chroma[x].add(row[x], 0.25F);
        chroma[x].add(row[x + 1], 0.125F);
    }
}

/// Every pixel that a tile changes: the chroma sample right of it also stands for its last column.
PixelBox changedBox(const PixelBox& tile, PixelSize output, Subsampling subsampling) {
    if (tile.isEmpty()) return {};
    const int even = planeGrid(1, subsampling).divisor;
    const int left = tile.x / even * even;
    const int top = tile.y / even * even;
    const int right = (tile.right() + 2 * (even - 1)) / even * even;
    const int bottom = (tile.bottom() + even - 1) / even * even;
    return PixelBox{left, top, right - left, bottom - top}.intersected({0, 0, output.width, output.height});
}

std::int32_t ofWhole(float value) { return static_cast<std::int32_t>(std::lrint(value * kWhole)); }

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

OverlaySprite::OverlaySprite(const Tile& tile, PixelSize output, Subsampling subsampling)
    : m_box(changedBox(tile.box, output, subsampling)),
      m_subsampling(subsampling) {
    for (int p = 0; p < 3; ++p) {
        Layer& layer = m_layers[static_cast<std::size_t>(p)];
        layer.samples = planeBox(m_box, planeGrid(p, subsampling));
        const auto width = static_cast<std::size_t>(layer.samples.width);
        layer.added.resize(width * static_cast<std::size_t>(layer.samples.height));
        layer.kept.resize(layer.added.size());
    }
    const auto set = [this](int plane, int y, const std::vector<LevelPixel>& pixels, int divisor) {
        Layer& layer = m_layers[static_cast<std::size_t>(plane)];
        const auto first = static_cast<std::size_t>(y - layer.samples.y) *
                           static_cast<std::size_t>(layer.samples.width);
        for (int x = 0; x < layer.samples.width; ++x) {
            const LevelPixel& pixel = pixels[static_cast<std::size_t>(1 + x * divisor)];
            const auto at = first + static_cast<std::size_t>(x);
            layer.added[at] = ofWhole(plane == 0 ? pixel.y : plane == 1 ? pixel.cb : pixel.cr);
            layer.kept[at] = ofWhole(1 - pixel.alpha);
        }
    };
    // A chroma sample also stands for half of the pixels on its either side, outside of the box too.
    std::vector<LevelPixel> row(static_cast<std::size_t>(m_box.width) + 2);
    std::vector<LevelPixel> chroma(row.size());
    const int divisor = planeGrid(1, subsampling).divisor;
    for (int y = m_box.y; y < m_box.bottom(); ++y) {
        readRow(tile, output, m_box.x - 1, y, row);
        set(0, y, row, 1);
        if (divisor == 2) addToChroma(row, y, chroma);
        if (divisor == 2 && y % 2 == 0 && y + 1 < m_box.bottom()) continue;
        for (int p = 1; p < 3; ++p) set(p, y / divisor, divisor == 2 ? chroma : row, divisor);
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
