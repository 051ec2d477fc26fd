#include "CompositorReference.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>
#include <optional>

#include "render/BackgroundArt.h"
#include "render/BlueNoise.h"
#include "render/CaptionLayer.h"
#include "render/wallpapers/Wallpaper.h"

namespace morvelin::test {

namespace {

double sinc(double x) { return std::abs(x) < 1e-12 ? 1 : std::sin(std::numbers::pi * x) / (std::numbers::pi * x); }
double lanczos(double x) { return std::abs(x) < 3 ? sinc(x) * sinc(x / 3) : 0; }
double cubic(double x) {
    const double d = std::abs(x);
    if (d < 1) return 1.5 * d * d * d - 2.5 * d * d + 1;
    return d < 2 ? -0.5 * d * d * d + 2.5 * d * d - 4 * d + 2 : 0;
}

using Kernel = double (*)(double);

/// A kernel's weights around a place on one axis.
struct Taps {
    int first;
    std::vector<double> weights;

    Taps(double place, Kernel kernel, double width) : first(static_cast<int>(std::floor(place - 3 * width))) {
        for (int i = first; i <= std::ceil(place + 3 * width); ++i) weights.push_back(kernel((i - place) / width));
    }
};

/// Reads `grid` at a place in samples with a kernel widened to `widthX` and `widthY` samples.
double sample(const Grid& grid, double x, double y, Kernel kernel, double widthX, double widthY) {
    const Taps across(x, kernel, widthX), down(y, kernel, widthY);
    double sum = 0, weights = 0;
    for (std::size_t j = 0; j < down.weights.size(); ++j)
        for (std::size_t i = 0; i < across.weights.size(); ++i) {
            const double w = down.weights[j] * across.weights[i];
            sum += w * grid.at(across.first + static_cast<int>(i), down.first + static_cast<int>(j));
            weights += w;
        }
    return sum / weights;
}

/// True Gaussians along both axes; past its edges the grid is what `at` says.
Grid blurred(const Grid& grid, double sigmaX, double sigmaY) {
    const auto pass = [](const Grid& from, double sigma, int dx, int dy) {
        Grid to(from.width, from.height);
        const int reach = static_cast<int>(std::ceil(5 * sigma));
        for (int y = 0; y < from.height; ++y)
            for (int x = 0; x < from.width; ++x) {
                double sum = 0, weights = 0;
                for (int n = -reach; n <= reach; ++n) {
                    const double w = std::exp(-n * n / (2 * sigma * sigma));
                    sum += w * from.at(x + n * dx, y + n * dy);
                    weights += w;
                }
                to.at(x, y) = sum / weights;
            }
        return to;
    };
    return pass(pass(grid, sigmaX, 1, 0), sigmaY, 0, 1);
}

bool isInside(const Rectangle& rect, double radius, double x, double y) {
    if (x < rect.x || x > rect.right() || y < rect.y || y > rect.bottom()) return false;
    const double cx = std::clamp(x, rect.x + radius, rect.right() - radius);
    const double cy = std::clamp(y, rect.y + radius, rect.bottom() - radius);
    return (x - cx) * (x - cx) + (y - cy) * (y - cy) <= radius * radius || cx == x || cy == y;
}

/// The share of a pixel in which `inside` holds.
template <class Inside>
double share(int x, int y, int steps, const Inside& inside) {
    int hits = 0;
    for (int j = 0; j < steps; ++j)
        for (int i = 0; i < steps; ++i) hits += inside(x + (i + 0.5) / steps, y + (j + 0.5) / steps) ? 1 : 0;
    return static_cast<double>(hits) / (steps * steps);
}

double roundedShare(const Rectangle& rect, double radius, int x, int y) {
    const double r = radius + 1;
    if (x > rect.x + r && x + 1 < rect.right() - r && y > rect.y + 1 && y + 1 < rect.bottom() - 1) return 1;
    if (x > rect.x + 1 && x + 1 < rect.right() - 1 && y > rect.y + r && y + 1 < rect.bottom() - r) return 1;
    if (x + 1 < rect.x || x > rect.right() || y + 1 < rect.y || y > rect.bottom()) return 0;
    return share(x, y, 64, [&](double px, double py) { return isInside(rect, radius, px, py); });
}

Levels levelsOf(double red, double green, double blue) {
    const double luma = 0.2126 * red + 0.7152 * green + 0.0722 * blue;
    return {16 + 219 * luma, 128 + 224 * (blue - luma) / 1.8556, 128 + 224 * (red - luma) / 1.5748};
}

bool isInside(const ArtShape& shape, double x, double y) {
    const double dx = x - shape.centerX, dy = y - shape.centerY;
    const double lx = std::abs(std::cos(shape.angle) * dx + std::sin(shape.angle) * dy);
    const double ly = std::abs(-std::sin(shape.angle) * dx + std::cos(shape.angle) * dy);
    switch (shape.kind) {
    case ArtShape::Kind::Circle: return dx * dx + dy * dy <= shape.halfWidth * shape.halfWidth;
    case ArtShape::Kind::Diamond: return lx + ly <= shape.halfWidth;
    case ArtShape::Kind::Bar:
        return isInside({-shape.halfWidth, -shape.halfHeight, 2 * shape.halfWidth, 2 * shape.halfHeight},
                        shape.cornerRadius, lx, ly);
    }
    return false;
}

using Ground = std::function<Levels(int x, int y)>;

Ground wallpaperGround(const wallpapers::Wallpaper& wallpaper, PixelSize size) {
    auto rows = std::make_shared<std::vector<std::vector<wallpapers::Light>>>(size.height);
    for (int y = 0; y < size.height; ++y) {
        (*rows)[static_cast<std::size_t>(y)].resize(static_cast<std::size_t>(size.width));
        wallpaper.paintRow(y, (*rows)[static_cast<std::size_t>(y)]);
    }
    const auto coded = [](double light) {
        const double limited = std::clamp(light, 0.0, 1.0);
        return limited <= 0.0031308 ? 12.92 * limited : 1.055 * std::pow(limited, 1 / 2.4) - 0.055;
    };
    return [=](int x, int y) {
        const wallpapers::Light light = (*rows)[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)];
        return levelsOf(coded(light.red), coded(light.green), coded(light.blue));
    };
}

/// An image that covers the output, its middle on the output's to the pixel.
Ground imageGround(const Image& image, PixelSize size) {
    std::array<Grid, 3> planes{Grid(image.size.width, image.size.height), Grid(image.size.width, image.size.height),
                               Grid(image.size.width, image.size.height)};
    for (int y = 0; y < image.size.height; ++y)
        for (int x = 0; x < image.size.width; ++x) {
            const std::uint8_t* pixel = image.pixels.data() + 4 * (y * image.size.width + x);
            const Levels levels = levelsOf(pixel[2] / 255.0, pixel[1] / 255.0, pixel[0] / 255.0);
            for (std::size_t p = 0; p < 3; ++p) planes[p].at(x, y) = levels[p];
        }
    const double scale = std::max(1.0 * size.width / image.size.width, 1.0 * size.height / image.size.height);
    const double left = std::round((size.width - image.size.width * scale) / 2);
    const double top = std::round((size.height - image.size.height * scale) / 2);
    const double kernelWidth = std::max(1.0, 1 / scale);
    return [=](int x, int y) {
        Levels levels;
        for (std::size_t p = 0; p < 3; ++p)
            levels[p] = sample(planes[p], (x + 0.5 - left) / scale - 0.5, (y + 0.5 - top) / scale - 0.5, cubic,
                               kernelWidth, kernelWidth);
        return levels;
    };
}

/// What lies below a background's figures and grain.
Ground groundOf(const CompositionInstruction& instruction, const BackgroundArt& art) {
    const PixelSize size = instruction.outputSize;
    const auto type = instruction.background ? instruction.background->type : BackgroundType::SolidColor;
    if (type == BackgroundType::Wallpaper)
        if (const auto wallpaper = wallpapers::makeWallpaper(instruction.background->wallpaperName, size))
            return wallpaperGround(*wallpaper, size);
    if (type == BackgroundType::Image && instruction.backgroundImage)
        return imageGround(*instruction.backgroundImage, size);
    return [=, &art](int x, int y) {
        const Rgb color = art.colorAt((x + 0.5) / size.width, (y + 0.5) / size.height);
        return levelsOf(color.red, color.green, color.blue);
    };
}

/// A layer's colour and opacity at one pixel.
struct Over {
    Levels color{};
    double alpha = 0;
};

Over ringAt(const FramePlan& plan, const PingRing& ring, int x, int y) {
    const double reach = (ring.diameter + ring.lineWidth) / 2 + 1;
    if (std::abs(x + 0.5 - ring.centerX) > reach || std::abs(y + 0.5 - ring.centerY) > reach) return {};
    const double covered = share(x, y, 16, [&](double px, double py) {
        const double distance = std::hypot(px - ring.centerX, py - ring.centerY);
        return std::abs(distance - ring.diameter / 2) <= ring.lineWidth / 2;
    });
    return {levelsOf(ring.color.red, ring.color.green, ring.color.blue),
            covered * ring.color.alpha * roundedShare(plan.stage.frameRect, plan.stage.cornerRadius, x, y)};
}

Over pointerAt(const PointerPlacement& pointer, int x, int y) {
    const Image& image = *pointer.image;
    const double reach = 4 + 2 * pointer.rect.width / image.size.width;
    if (x < pointer.rect.x - reach || x > pointer.rect.right() + reach || y < pointer.rect.y - reach ||
        y > pointer.rect.bottom() + reach)
        return {};
    const double stepX = image.size.width / pointer.rect.width, stepY = image.size.height / pointer.rect.height;
    const double sx = (x + 0.5 - pointer.rect.x) * stepX - 0.5, sy = (y + 0.5 - pointer.rect.y) * stepY - 0.5;
    const double widthX = std::max(stepX, 1.0), widthY = std::max(stepY, 1.0);
    double sums[4] = {}, weightsX = 0, weightsY = 0;
    for (int i = static_cast<int>(std::floor(sx - 2 * widthX)); i <= sx + 2 * widthX; ++i)
        weightsX += cubic((i - sx) / widthX);
    for (int j = static_cast<int>(std::floor(sy - 2 * widthY)); j <= sy + 2 * widthY; ++j)
        weightsY += cubic((j - sy) / widthY);
    for (int j = 0; j < image.size.height; ++j)
        for (int i = 0; i < image.size.width; ++i)
            for (int channel = 0; channel < 4; ++channel)
                sums[channel] += cubic((i - sx) / widthX) / weightsX * cubic((j - sy) / widthY) / weightsY *
                                 image.pixels[static_cast<std::size_t>(4 * (j * image.size.width + i) + channel)] / 255;
    const double alpha = std::clamp(sums[3], 0.0, 1.0);
    if (alpha <= 0) return {};
    for (double& sum : sums) sum = std::clamp(sum, 0.0, alpha) / alpha;
    return {levelsOf(sums[2], sums[1], sums[0]), alpha};
}

/// A value for each pixel of an output.
template <class Value, class At>
std::vector<Value> everywhere(PixelSize size, const At& at) {
    std::vector<Value> values;
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) values.push_back(at(x, y));
    return values;
}

/// SplitMix64, straight from the paper.
double nextFraction(std::uint64_t& state) {
    std::uint64_t z = state += 0x9e3779b97f4a7c15;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9;
    z = (z ^ (z >> 27)) * 0x94d049bb133111eb;
    return static_cast<double>((z ^ (z >> 31)) >> 11) / 9007199254740992.0;
}

/// A focus oval's curve as many short lines; its angles run against the clock.
std::vector<NormalizedPoint> ovalCurve(const FocusOval& oval) {
    constexpr int kSegments = 72, kSteps = 6;
    constexpr double kTurn = 2 * std::numbers::pi;
    std::uint64_t state = oval.seed;
    double r[5];
    for (double& fraction : r) fraction = nextFraction(state);
    std::vector<NormalizedPoint> points;
    for (int i = 0; i <= kSegments; ++i) {
        const double angle = kTurn * r[4] + kTurn * i / kSegments;
        const double k = 1 + (0.05 + 0.03 * r[0]) * std::sin(kTurn * r[2] + 2 * angle) +
                         (0.02 + 0.02 * r[1]) * std::sin(kTurn * r[3] + 3 * angle);
        points.push_back({oval.rect.x + oval.rect.width / 2 + oval.rect.width / 2 * std::cos(angle) * k,
                          oval.rect.y + oval.rect.height / 2 - oval.rect.height / 2 * std::sin(angle) * k});
    }
    const auto mix = [](const NormalizedPoint& a, const NormalizedPoint& b, double t) {
        return NormalizedPoint{std::lerp(a.x, b.x, t), std::lerp(a.y, b.y, t)};
    };
    std::vector<NormalizedPoint> curve{mix(points[0], points[1], 0.5)};
    for (std::size_t i = 1; i < points.size(); ++i) {
        const NormalizedPoint from = curve.back(), to = mix(points[i], points[(i + 1) % points.size()], 0.5);
        for (int step = 1; step <= kSteps; ++step) {
            const double t = static_cast<double>(step) / kSteps;
            curve.push_back(mix(mix(from, points[i], t), mix(points[i], to, t), t));
        }
    }
    curve.push_back(curve.front());
    return curve;
}

double distanceToLine(const NormalizedPoint& a, const NormalizedPoint& b, double x, double y) {
    const double dx = b.x - a.x, dy = b.y - a.y, length = dx * dx + dy * dy;
    const double t = length > 0 ? std::clamp(((x - a.x) * dx + (y - a.y) * dy) / length, 0.0, 1.0) : 0;
    return std::hypot(x - a.x - t * dx, y - a.y - t * dy);
}

std::vector<Over> ovalLayer(const FramePlan& plan, const FocusOval& oval, PixelSize size) {
    const auto curve = ovalCurve(oval);
    return everywhere<Over>(size, [&](int x, int y) -> Over {
        std::vector<std::size_t> near;
        for (std::size_t i = 0; i + 1 < curve.size(); ++i)
            if (distanceToLine(curve[i], curve[i + 1], x + 0.5, y + 0.5) < oval.lineWidth / 2 + 1) near.push_back(i);
        if (near.empty()) return {};
        const double covered = share(x, y, 16, [&](double px, double py) {
            return std::ranges::any_of(near, [&](std::size_t i) {
                return distanceToLine(curve[i], curve[i + 1], px, py) <= oval.lineWidth / 2;
            });
        });
        return {levelsOf(oval.color.red, oval.color.green, oval.color.blue),
                covered * oval.color.alpha * roundedShare(plan.stage.frameRect, plan.stage.cornerRadius, x, y)};
    });
}

/// Art as it is drawn, laid over as any layer.
std::vector<Over> artLayer(const Tile& tile, PixelSize size, const std::function<double(int, int)>& clip) {
    return everywhere<Over>(size, [&](int x, int y) -> Over {
        if (x < tile.box.x || x >= tile.box.right() || y < tile.box.y || y >= tile.box.bottom()) return {};
        const Tile::Pixel& pixel = tile.row(y)[x - tile.box.x];
        const double alpha = pixel.alpha;
        if (alpha <= 0) return {};
        return {levelsOf(pixel.red / alpha, pixel.green / alpha, pixel.blue / alpha), alpha * clip(x, y)};
    });
}

std::vector<Over> bubbleShadow(const RoundedRectangle& square, PixelSize size) {
    const double side = square.rect.width, sigma = side * 0.06;
    Rectangle caster = square.rect;
    caster.y += side * 0.02;
    const int margin = static_cast<int>(std::ceil(5 * sigma)) + 2;
    Grid shadow(size.width + 2 * margin, size.height + 2 * margin);
    for (int y = 0; y < shadow.height; ++y)
        for (int x = 0; x < shadow.width; ++x)
            shadow.at(x, y) = roundedShare(caster, square.radius, x - margin, y - margin) * 0.35;
    shadow = blurred(shadow, sigma, sigma);
    return everywhere<Over>(size, [&](int x, int y) -> Over {
        return {levelsOf(0, 0, 0), shadow.at(x + margin, y + margin)};
    });
}

Grid planeOf(const Picture& picture, int plane) {
    const auto from = picture.plane(plane);
    Grid grid(from.width, from.height);
    for (int y = 0; y < from.height; ++y)
        for (int x = 0; x < from.width; ++x) grid.at(x, y) = from.row(y)[x];
    return grid;
}

/// One plane of a picture that fills a rectangle of the output.
class Video {
public:
    Video(const Rectangle& frame, const std::vector<MaskPlacement>& masks, const Picture& picture, int plane,
          int divisor)
        : m_frame(frame),
          m_grid(planeOf(picture, plane)),
          m_sourceStep(plane == 0 ? 1 : 2),
          m_scaleX(m_frame.width / picture.size().width),
          m_scaleY(m_frame.height / picture.size().height),
          m_widthX(std::max(1.0, divisor / m_scaleX / m_sourceStep)),
          m_widthY(std::max(1.0, divisor / m_scaleY / m_sourceStep)),
          m_low(16),
          m_high(plane == 0 ? 235 : 240) {
        for (const MaskPlacement& mask : masks)
            m_blurred.push_back(
                blurred(m_grid, mask.sigma / m_scaleX / m_sourceStep, mask.sigma / m_scaleY / m_sourceStep));
    }
    /// At a place in output pixels; `mask` numbers a blurred version, -1 is the plain one.
    double at(double x, double y, int mask) const {
        const double sx = ((x - m_frame.x) / m_scaleX - 0.5) / m_sourceStep;
        const double row = (y - m_frame.y) / m_scaleY;
        const double sy = m_sourceStep == 1 ? row - 0.5 : (row - 1) / 2;
        const Grid& grid = mask < 0 ? m_grid : m_blurred[static_cast<std::size_t>(mask)];
        return std::clamp(sample(grid, sx, sy, lanczos, m_widthX, m_widthY), m_low, m_high);
    }

private:
    Rectangle m_frame;
    Grid m_grid;
    double m_sourceStep, m_scaleX, m_scaleY, m_widthX, m_widthY, m_low, m_high;
    std::vector<Grid> m_blurred;
};

/// Each word as it is at the moment.
Tile captionTile(const CaptionPlacement& caption, PixelSize output) {
    CaptionArt art = captionArt(caption, output);
    for (const WordArea& area : art.areas) {
        const PixelBox part = area.box.intersected(art.lit.box);
        if (caption.words[area.word].isLit) continue;
        for (int y = part.y; y < part.bottom(); ++y)
            std::copy_n(art.unlit.row(y) + (part.x - art.lit.box.x), part.width,
                        art.lit.row(y) + (part.x - art.lit.box.x));
    }
    return std::move(art.lit);
}

/// A pixel that a sample stands for, by its place in a list of all pixels, and its weight.
struct Part {
    std::size_t pixel;
    double weight;
};

/// In 4:2:0 two rows, and a half, a whole and a half column around the left one; past the sides the last repeat.
std::vector<Part> partsOf(int x, int y, PixelSize size, int divisor) {
    const auto pixel = [&](int px, int py) {
        return static_cast<std::size_t>(py * size.width + std::clamp(px, 0, size.width - 1));
    };
    if (divisor == 1) return {{pixel(x, y), 1}};
    std::vector<Part> parts;
    for (int row = 0; row < 2; ++row)
        for (int column = -1; column <= 1; ++column)
            parts.push_back({pixel(2 * x + column, 2 * y + row), column == 0 ? 0.25 : 0.125});
    return parts;
}

void lay(const std::vector<Over>& layer, const std::vector<Part>& parts, std::size_t plane, double& value) {
    double added = 0, kept = 0;
    for (const Part& part : parts) {
        added += part.weight * layer[part.pixel].alpha * layer[part.pixel].color[plane];
        kept += part.weight * (1 - layer[part.pixel].alpha);
    }
    value = added + kept * value;
}

/// The whole of a picture around a square's middle, as small as covers the square.
Rectangle covering(const Rectangle& square, PixelSize picture) {
    const double scale = std::max(square.width / picture.width, square.height / picture.height);
    const double width = picture.width * scale, height = picture.height * scale;
    return {square.x + square.width / 2 - width / 2, square.y + square.height / 2 - height / 2, width, height};
}

double mean(const std::vector<Part>& parts, const std::vector<double>& values) {
    double sum = 0;
    for (const Part& part : parts) sum += part.weight * values[part.pixel];
    return sum;
}

} // namespace

double& Grid::at(int x, int y) {
    return values[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)];
}
double Grid::at(int x, int y) const {
    return values[static_cast<std::size_t>(std::clamp(y, 0, height - 1)) * static_cast<std::size_t>(width) +
                  static_cast<std::size_t>(std::clamp(x, 0, width - 1))];
}

ReferenceCompositor::ReferenceCompositor(const CompositionInstruction& instruction)
    : m_instruction(instruction),
      m_plain(makeStage(false)),
      m_shadowed(instruction.shadowIntensity > 0 ? makeStage(true) : m_plain) {}

std::array<Grid, 3> ReferenceCompositor::makeStage(bool castsShadow) const {
    const int width = m_instruction.outputSize.width, height = m_instruction.outputSize.height;
    const BackgroundArt art(m_instruction.background, m_instruction.outputSize);
    CompositionInstruction bare;
    bare.videoNaturalSize = m_instruction.videoNaturalSize;
    bare.outputSize = m_instruction.outputSize;
    bare.padding = m_instruction.padding;
    bare.cornerRadius = m_instruction.cornerRadius;
    bare.shadowIntensity = m_instruction.shadowIntensity;
    const FramePlan rest = framePlan(bare, EditTime(0), {});
    // Room around the output, so that a shadow that begins outside comes in.
    const double strength = std::min(m_instruction.shadowIntensity, 1.0);
    const double side = std::min(rest.stage.frameRect.width, rest.stage.frameRect.height);
    const double sigma = side * strength * 0.06;
    const int margin = static_cast<int>(std::ceil(5 * sigma)) + 2;
    Grid shadow(width + 2 * margin, height + 2 * margin);
    if (castsShadow && rest.stage.castsShadow) {
        Rectangle caster = rest.stage.frameRect;
        caster.y += side * strength * 0.03;
        for (int y = 0; y < shadow.height; ++y)
            for (int x = 0; x < shadow.width; ++x)
                shadow.at(x, y) = roundedShare(caster, rest.stage.cornerRadius, x - margin, y - margin) * strength *
                                  0.5;
        shadow = blurred(shadow, sigma, sigma);
    }
    const auto ground = groundOf(m_instruction, art);
    std::array<Grid, 3> stage{Grid(width, height), Grid(width, height), Grid(width, height)};
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            Levels levels = ground(x, y);
            for (const ArtShape& shape : art.shapes()) {
                const ArtShape::Veil veil = shape.veilAt(x + 0.5, y + 0.5);
                const double alpha = share(x, y, 8, [&](double px, double py) { return isInside(shape, px, py); }) *
                                     veil.alpha;
                const Levels above = levelsOf(veil.color.red, veil.color.green, veil.color.blue);
                for (std::size_t p = 0; p < 3; ++p) levels[p] = std::lerp(levels[p], above[p], alpha);
            }
            const Levels grain{16 + 219.0 * BlueNoise::tile().rank(x, y) / 4095, 128, 128};
            const Levels black{16, 128, 128};
            for (std::size_t p = 0; p < 3; ++p) {
                if (art.hasGrain()) levels[p] = std::lerp(levels[p], grain[p], 0.018);
                stage[p].at(x, y) = std::lerp(levels[p], black[p], shadow.at(x + margin, y + margin));
            }
        }
    }
    return stage;
}

Levels ReferenceCompositor::stageAt(const FramePlan& plan, int x, int y) const {
    const Camera& camera = plan.stage.camera;
    const double sx = (x + 0.5 + camera.offsetX) / camera.zoom - 0.5;
    const double sy = (y + 0.5 + camera.offsetY) / camera.zoom - 0.5;
    const auto& stage = plan.stage.castsShadow ? m_shadowed : m_plain;
    Levels levels;
    for (std::size_t p = 0; p < 3; ++p) levels[p] = sample(stage[p], sx, sy, cubic, 1, 1);
    return levels;
}

std::array<Grid, 3> ReferenceCompositor::compose(const FramePlan& plan, const ShownFrames& frames,
                                                 Subsampling subsampling) const {
    const PixelSize size = m_instruction.outputSize;
    const auto covered = everywhere<double>(size, [&](int x, int y) {
        return plan.stage.showsPicture ? roundedShare(plan.stage.frameRect, plan.stage.cornerRadius, x, y) : 0;
    });
    const auto stage = everywhere<Levels>(size, [&](int x, int y) {
        return covered[static_cast<std::size_t>(y * size.width + x)] < 1 ? stageAt(plan, x, y) : Levels{};
    });
    std::vector<std::vector<double>> masked;
    for (const MaskPlacement& mask : plan.masks)
        masked.push_back(everywhere<double>(size, [&](int x, int y) { return roundedShare(mask.rect, 0, x, y); }));
    std::vector<std::vector<Over>> layers;
    for (const PingRing& ring : plan.rings)
        layers.push_back(everywhere<Over>(size, [&](int x, int y) { return ringAt(plan, ring, x, y); }));
    if (plan.pointer)
        layers.push_back(everywhere<Over>(size, [&](int x, int y) { return pointerAt(*plan.pointer, x, y); }));
    for (const FocusOval& oval : plan.ovals) layers.push_back(ovalLayer(plan, oval, size));
    for (const TapTapHand& hand : plan.hands)
        layers.push_back(artLayer(drawn(hand, size), size, [&](int x, int y) {
            return roundedShare(plan.stage.frameRect, plan.stage.cornerRadius, x, y);
        }));
    const bool hasBubble = plan.camera && frames.camera;
    if (hasBubble) layers.push_back(bubbleShadow(plan.camera->square, size));
    const auto bubble = everywhere<double>(size, [&](int x, int y) {
        return hasBubble ? roundedShare(plan.camera->square.rect, plan.camera->square.radius, x, y) : 0;
    });
    const Rectangle cameraFrame = hasBubble ? covering(plan.camera->square.rect, frames.camera->picture->size())
                                            : Rectangle{};
    const auto caption = plan.caption ? artLayer(captionTile(*plan.caption, size), size, [](int, int) { return 1.0; })
                                      : std::vector<Over>(covered.size());

    std::array<Grid, 3> out{Grid(0, 0), Grid(0, 0), Grid(0, 0)};
    for (int plane = 0; plane < 3; ++plane) {
        const auto p = static_cast<std::size_t>(plane);
        const int divisor = plane > 0 && subsampling == Subsampling::Quarter ? 2 : 1;
        const Video video(plan.stage.frameRect, plan.masks, *frames.recording.picture, plane, divisor);
        std::optional<Video> camera;
        if (hasBubble)
            camera.emplace(cameraFrame, std::vector<MaskPlacement>(), *frames.camera->picture, plane, divisor);
        out[p] = Grid((size.width + divisor - 1) / divisor, (size.height + divisor - 1) / divisor);
        for (int y = 0; y < out[p].height; ++y) {
            for (int x = 0; x < out[p].width; ++x) {
                const std::vector<Part> parts = partsOf(x, y, size, divisor);
                const double px = divisor == 2 ? 2 * x + 0.5 : x + 0.5;
                const double py = divisor == 2 ? 2 * y + 1 : y + 0.5;
                double value = 0;
                for (const Part& part : parts) value += part.weight * (1 - covered[part.pixel]) * stage[part.pixel][p];
                if (const double share = mean(parts, covered); share > 0) {
                    double shown = video.at(px, py, -1);
                    for (std::size_t m = 0; m < masked.size(); ++m)
                        if (const double under = mean(parts, masked[m]); under > 0)
                            shown = std::lerp(shown, video.at(px, py, static_cast<int>(m)), under);
                    value += share * shown;
                }
                for (const std::vector<Over>& layer : layers) lay(layer, parts, p, value);
                if (const double share = mean(parts, bubble); share > 0) {
                    const Rectangle& square = plan.camera->square.rect;
                    const double cx = plan.camera->isMirrored ? 2 * square.x + square.width - px : px;
                    value = std::lerp(value, camera->at(cx, py, -1), share);
                }
                lay(caption, parts, p, value);
                out[p].at(x, y) = value;
            }
        }
    }
    return out;
}

Difference difference(const std::array<Grid, 3>& reference, const Picture& picture) {
    Difference result;
    double count = 0;
    for (int p = 0; p < 3; ++p) {
        const Grid& grid = reference[static_cast<std::size_t>(p)];
        for (int y = 0; y < grid.height; ++y)
            for (int x = 0; x < grid.width; ++x) {
                const double apart = std::abs(grid.at(x, y) - picture.plane(p).row(y)[x]);
                result.mean += apart;
                result.share += apart > 6 ? 1 : 0;
                result.worst = std::max(result.worst, apart);
                count += 1;
            }
    }
    result.mean /= count;
    result.share /= count;
    return result;
}

} // namespace morvelin::test
