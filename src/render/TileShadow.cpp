#include "render/TileShadow.h"

#include <algorithm>
#include <cmath>

namespace morvelin {

namespace {

/// Beyond this many deviations a Gaussian's tail can't be seen.
constexpr double kReach = 3;
/// So many samples to a deviation are enough for straight lines between them.
constexpr double kSamplesPerSigma = 2.5;

/// One level of opacity for each sample, rows one after the other; `left` and `top` count samples.
struct OpacityField {
    PixelBox box;
    std::vector<float> values;

    explicit OpacityField(const PixelBox& where)
        : box(where),
          values(static_cast<std::size_t>(where.width) * static_cast<std::size_t>(where.height)) {}
    float* row(int y) { return values.data() + static_cast<std::ptrdiff_t>(y - box.y) * box.width; }
    const float* row(int y) const { return values.data() + static_cast<std::ptrdiff_t>(y - box.y) * box.width; }
};

std::vector<float> gaussianWeights(double sigma) {
    const int reach = static_cast<int>(std::ceil(kReach * sigma));
    std::vector<float> weights;
    float sum = 0;
    for (int n = -reach; n <= reach; ++n) {
        weights.push_back(static_cast<float>(std::exp(-n * n / (2 * sigma * sigma))));
        sum += weights.back();
    }
    for (float& weight : weights) weight /= sum;
    return weights;
}

/// Taking samples and drawing lines between them blurs too: what is left for the blur itself, in samples.
double remainingSigma(double sigma, int spacing) {
    const double area = static_cast<double>(spacing) * spacing;
    const double samplesVariance = (area - 1) / 12;
    const double linesVariance = (area - 1) / 6;
    return std::sqrt(std::max(sigma * sigma - samplesVariance - linesVariance, 0.01)) / spacing;
}

/// `out` is `weights.size()` - 1 narrower than `in`.
void blurAcross(const OpacityField& in, const std::vector<float>& weights, OpacityField& out) {
    for (int y = out.box.y; y < out.box.bottom(); ++y) {
        float* to = out.row(y);
        for (std::size_t tap = 0; tap < weights.size(); ++tap) {
            const float* from = in.row(y) + tap;
            const float weight = weights[tap];
            for (int x = 0; x < out.box.width; ++x) to[x] += from[x] * weight;
        }
    }
}

/// `out` is `weights.size()` - 1 lower than `in`.
void blurDown(const OpacityField& in, const std::vector<float>& weights, OpacityField& out) {
    for (int y = 0; y < out.box.height; ++y) {
        float* to = out.row(out.box.y + y);
        for (std::size_t tap = 0; tap < weights.size(); ++tap) {
            const float* from = in.row(in.box.y + y + static_cast<int>(tap));
            const float weight = weights[tap];
            for (int x = 0; x < out.box.width; ++x) to[x] += from[x] * weight;
        }
    }
}

PixelBox grown(const PixelBox& box, int across, int down) {
    return {box.x - across, box.y - down, box.width + 2 * across, box.height + 2 * down};
}

/// The opacity of an image in samples of `spacing` pixels each way; nothing beside the image.
OpacityField opacities(const Image& image, const PixelBox& imageBox, const PixelBox& samples, int spacing) {
    OpacityField field(samples);
    const PixelBox pixels = PixelBox{samples.x * spacing, samples.y * spacing, samples.width * spacing,
                                     samples.height * spacing}
                                .intersected(imageBox);
    const float share = 1.0F / (255.0F * static_cast<float>(spacing) * static_cast<float>(spacing));
    for (int y = pixels.y; y < pixels.bottom(); ++y) {
        const std::uint8_t* alpha =
            image.pixels.data() +
            4 * (static_cast<std::ptrdiff_t>(y - imageBox.y) * imageBox.width + (pixels.x - imageBox.x)) + 3;
        float* to = field.row(static_cast<int>(std::floor(static_cast<double>(y) / spacing)));
        int sample = static_cast<int>(std::floor(static_cast<double>(pixels.x) / spacing));
        int left = (sample + 1) * spacing - pixels.x;
        for (int x = 0; x < pixels.width; ++x, --left) {
            if (left == 0) {
                ++sample;
                left = spacing;
            }
            to[sample - samples.x] += static_cast<float>(alpha[4 * x]) * share;
        }
    }
    return field;
}

OpacityField blurred(const OpacityField& field, const std::vector<float>& weights) {
    const int reach = static_cast<int>(weights.size() / 2);
    OpacityField across(grown(field.box, -reach, 0));
    blurAcross(field, weights, across);
    OpacityField both(grown(across.box, 0, -reach));
    blurDown(across, weights, both);
    return both;
}

/// The two samples around each pixel of an axis.
struct Between {
    int first;
    float share; ///< of the second
};

std::vector<Between> between(int start, int count, double offset, int spacing) {
    std::vector<Between> places;
    for (int i = 0; i < count; ++i) {
        const double at = (start + i + 0.5 - offset) / spacing - 0.5;
        places.push_back({static_cast<int>(std::floor(at)), static_cast<float>(at - std::floor(at))});
    }
    return places;
}

} // namespace

double TileShadow::reach() const { return kReach * sigma + std::max(std::abs(offset.x), std::abs(offset.y)); }

void layShadow(const TileShadow& shadow, const Image& caster, const PixelBox& casterBox, Tile& tile) {
    if (tile.box.isEmpty() || caster.isEmpty() || !(shadow.sigma > 0) || !(shadow.opacity > 0)) return;
    const int spacing = std::max(1, static_cast<int>(shadow.sigma / kSamplesPerSigma));
    const std::vector<Between> xs = between(tile.box.x, tile.box.width, shadow.offset.x, spacing);
    const std::vector<Between> ys = between(tile.box.y, tile.box.height, shadow.offset.y, spacing);
    const PixelBox samples{xs.front().first, ys.front().first, xs.back().first + 2 - xs.front().first,
                           ys.back().first + 2 - ys.front().first};

    const std::vector<float> weights = gaussianWeights(remainingSigma(shadow.sigma, spacing));
    const int reach = static_cast<int>(weights.size() / 2);
    const OpacityField field = blurred(opacities(caster, casterBox, grown(samples, reach, reach), spacing), weights);
    const auto depth = static_cast<float>(shadow.opacity);
    for (int y = 0; y < tile.box.height; ++y) {
        const auto& [first, share] = ys[static_cast<std::size_t>(y)];
        const float* upper = field.row(first);
        const float* lower = field.row(first + 1);
        Tile::Pixel* to = tile.row(tile.box.y + y);
        for (int x = 0; x < tile.box.width; ++x) {
            const Between& at = xs[static_cast<std::size_t>(x)];
            const int left = at.first - samples.x;
            const float above = upper[left] + (upper[left + 1] - upper[left]) * at.share;
            const float below = lower[left] + (lower[left + 1] - lower[left]) * at.share;
            to[x].alpha += (above + (below - above) * share) * depth * (1 - to[x].alpha);
        }
    }
}

Image withShadow(const Image& drawing, const TileShadow& shadow) {
    const PixelBox box{0, 0, drawing.size.width, drawing.size.height};
    Tile tile = tileOf(drawing, box);
    layShadow(shadow, drawing, box, tile);
    Image image{drawing.size, {}};
    image.pixels.reserve(drawing.pixels.size());
    for (const Tile::Pixel& pixel : tile.pixels)
        for (const float level : {pixel.blue, pixel.green, pixel.red, pixel.alpha})
            image.pixels.push_back(static_cast<std::uint8_t>(std::lround(level * 255)));
    return image;
}

} // namespace morvelin
