#include "render/FocusOval.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "core/Keyframes.h"
#include "render/AccentColor.h"
#include "render/Canvas.h"
#include "render/PicturePlacement.h"

namespace morvelin {

namespace {

constexpr int kSegments = 72;
/// Below this an oval is not seen.
constexpr double kSmallestOpacity = 0.001;
/// An oval with a smaller side is no oval, in pixels.
constexpr double kSmallestSide = 1;
/// A hand-drawn ring leaves its rectangle by at most this fraction of its half side.
constexpr double kWobble = 0.13;
/// In place of a seed of zero, which any other could not be told from.
constexpr std::uint64_t kFallbackSeed = 0x9e3779b97f4a7c15;

/// SplitMix64 (Steele, Lea and Flood, "Fast splittable pseudorandom number generators", 2014).
class SplitMix64 {
public:
    explicit SplitMix64(std::uint64_t seed) : m_state(seed) {}

    /// 0 up to but not including 1.
    double nextFraction() { return std::ldexp(static_cast<double>(next() >> 11), -53); }

private:
    std::uint64_t next() {
        m_state += 0x9e3779b97f4a7c15;
        std::uint64_t z = m_state;
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9;
        z = (z ^ (z >> 27)) * 0x94d049bb133111eb;
        return z ^ (z >> 31);
    }

    std::uint64_t m_state;
};

/// A key's ring wobbles as its id has it, in each frame and each run alike.
std::uint64_t seedOf(const UUID& id) {
    std::uint64_t seed = 0;
    for (std::size_t i = 0; i < 8; ++i) seed = seed << 8 | id.bytes[i];
    return seed != 0 ? seed : kFallbackSeed;
}

} // namespace

std::vector<FocusOval> focusOvalsAt(const CompositionInstruction& instruction, const StageGeometry& stage, EditTime t) {
    std::vector<FocusOval> ovals;
    for (const FocusKeyframe& key : instruction.focusKeyframes) {
        const double opacity = focusOpacity(key, t);
        if (!(opacity > kSmallestOpacity)) continue;
        const Rectangle rect = stage.outputRectangle(key.rect);
        if (!(rect.width > kSmallestSide) || !(rect.height > kSmallestSide) || !std::isfinite(rect.x + rect.y) ||
            !std::isfinite(rect.width + rect.height))
            continue;

        CodableColor color = key.color.value_or(instruction.annotationColor.value_or(kAccentColor));
        color.alpha = std::clamp(color.alpha, 0.0, 1.0) * opacity;
        ovals.push_back({rect, std::max(2.0, stage.videoRect.width * 0.004), color, seedOf(key.id)});
    }
    return ovals;
}

std::vector<PathPoint> handDrawnOval(const Rectangle& rect, std::uint64_t seed, int count) {
    if (count < 8 || !(rect.width > 0) || !(rect.height > 0)) return {};
    constexpr double kTurn = 2 * std::numbers::pi;
    SplitMix64 random(seed);
    const double twofold = 0.05 + 0.03 * random.nextFraction();
    const double threefold = 0.02 + 0.02 * random.nextFraction();
    const double phase2 = kTurn * random.nextFraction();
    const double phase3 = kTurn * random.nextFraction();
    const double start = kTurn * random.nextFraction();

    std::vector<PathPoint> points;
    for (int i = 0; i <= count; ++i) {
        const double angle = start + kTurn * i / count;
        const double reach = 1 + twofold * std::sin(phase2 + 2 * angle) + threefold * std::sin(phase3 + 3 * angle);
        points.push_back({rect.x + rect.width / 2 * (1 + std::cos(angle) * reach),
                          rect.y + rect.height / 2 * (1 - std::sin(angle) * reach)});
    }
    return points;
}

Tile drawn(const FocusOval& oval, PixelSize output) {
    const double spareX = oval.rect.width * kWobble / 2 + oval.lineWidth;
    const double spareY = oval.rect.height * kWobble / 2 + oval.lineWidth;
    const PixelBox box = touchedPixels(
        {oval.rect.x - spareX, oval.rect.y - spareY, oval.rect.width + 2 * spareX, oval.rect.height + 2 * spareY},
        output);
    if (box.isEmpty()) return Tile(box);

    Canvas canvas(box);
    canvas.stroke(VectorPath::aroundMidpoints(handDrawnOval(oval.rect, oval.seed, kSegments)), oval.lineWidth,
                  oval.color);
    return tileOf(canvas.image(), box);
}

} // namespace morvelin
