// A flower so close that its petals fill the picture: they overlap like shingles, each darker where the next lies on it.

#include <numbers>

#include "render/wallpapers/Noise.h"
#include "render/wallpapers/Scenes.h"

namespace morvelin::wallpapers {

namespace {

constexpr float kTurn = 2 * std::numbers::pi_v<float>;
constexpr float kCenterY = 0.60F;
/// Lengths of a petal at which its shadow ends, and what is subtracted so that it ends softly.
constexpr float kShadowReach = 1.45F;
constexpr float kShadowEnd = 0.012F;

struct Colors {
    Palette petal; ///< from its foot to its rim
    Light shade;
    Light rim;
};

Colors colorsOf(Mood mood) {
    if (mood == Mood::Light)
        return {.petal = Palette{{0, "E58AA6"}, {0.35F, "F4B3C2"}, {0.7F, "FBD7DA"}, {1, "FFF1EC"}},
                .shade = lightOf("C66A94"),
                .rim = lightOf("FFFFFF") * 0.09F};
    return {.petal = Palette{{0, "14061A"}, {0.35F, "3A0C3E"}, {0.7F, "7A1B58"}, {1, "B93A6C"}},
            .shade = lightOf("0A0312"),
            .rim = lightOf("FF9AB0") * 0.11F};
}

struct Petal {
    float angle;
    float towardsX; ///< the angle as a direction
    float towardsY;
    float leastCosine; ///< of directions that it or its shadow may lie in
    float length;
    float spread; ///< how wide, in radians to either side
    float tone;
};

/// From the innermost ring outwards, until they reach as far as `reach`.
std::vector<Petal> flower(float reach) {
    std::vector<Petal> petals;
    float length = 0.16F;
    for (int ring = 0; length < 2 * reach; ++ring, length *= 1.44F) {
        const auto n = static_cast<float>(ring);
        const int count = 5 + 2 * (ring / 2);
        for (int i = 0; i < count; ++i) {
            const float place = static_cast<float>(i) + (ring % 2 == 0 ? 0 : 0.5F);
            const float angle = kTurn * place / static_cast<float>(count) + 0.744F * n;
            const float spread = 4.4F / static_cast<float>(count);
            petals.push_back({angle, std::cos(angle), std::sin(angle), std::cos(1.3F * spread), length, spread,
                              chance(i, ring, 181)});
        }
    }
    return petals;
}

/// How far inside a petal a place lies, about; below 0 outside. `turned` is the place's direction, 1 at the petal's side.
float depthIn(const Petal& petal, float distance, float turned) {
    const float side = std::abs(turned);
    const float sideways = side * std::sqrt(side);
    const float length = petal.length * (1 + 0.05F * std::cos(7 * turned + 6 * petal.tone));
    const float out = distance / length;
    // The outline is where this is 0; its slope turns it into a distance.
    const float inside = 1 - sideways * side - out * out;
    const float slopeOut = 2 * out / length;
    const float slopeAround = 2.5F * sideways / (petal.spread * std::max(distance, 1e-3F));
    return inside / std::sqrt(slopeOut * slopeOut + slopeAround * slopeAround + 1e-6F);
}

class Petals final : public Wallpaper {
public:
    Petals(const View& view, Mood mood)
        : m_view(view),
          m_colors(colorsOf(mood)),
          m_centerX(view.across(0.36F)),
          m_petals(flower(std::hypot(view.halfWidth + std::abs(m_centerX), kCenterY))) {}

    void paintRow(int row, std::span<Light> pixels) const override {
        paintPoints(m_view, row, pixels, [&](float x, float y) { return lightAt(x - m_centerX, y - kCenterY); });
    }

private:
    /// From the innermost petal outwards, until nothing more shows through.
    [[nodiscard]] Light lightAt(float x, float y) const {
        const float distance = std::sqrt(x * x + y * y);
        const float angle = std::atan2(y, x);
        Light sum;
        float left = 1;
        float shadow = 0;
        for (const Petal& petal : m_petals) {
            if (petal.length * kShadowReach < distance) continue;
            if (petal.towardsX * x + petal.towardsY * y < petal.leastCosine * distance) continue;
            float away = angle - petal.angle;
            away -= kTurn * std::round(away / kTurn);
            const float turned = away / petal.spread;
            const float inside = depthIn(petal, distance, turned);
            const float covered = edge(inside, 1.3F * m_view.pixel);
            if (covered > 0) {
                const float share = left * covered;
                sum += mixed(petalAt(petal, distance, turned, inside), m_colors.shade, 0.80F * shadow) * share;
                left -= share;
                if (left < 0.002F) break;
            }
            // Just beyond a petal's rim lies its shadow on those below.
            const float beyond = std::max(-inside, 0.0F) / petal.length;
            shadow = std::max(shadow, 0.62F * (std::exp(-beyond * 10) - kShadowEnd) * (1 - covered));
        }
        return sum + m_colors.shade * left;
    }

    [[nodiscard]] Light petalAt(const Petal& petal, float distance, float turned, float inside) const {
        const float out = distance / petal.length;
        const float fold = 0.07F * std::cos(3.1F * turned) - 0.05F * turned + 0.05F * (petal.tone - 0.5F);
        const float vein = 0.012F * std::sin(46 * turned + 3 * out) * rise(0.2F, 0.6F, out);
        return m_colors.petal.at(0.12F + 0.86F * out * out + fold + vein) +
               m_colors.rim * (out * out * bell(inside / petal.length, 0.03F));
    }

    View m_view;
    Colors m_colors;
    float m_centerX;
    std::vector<Petal> m_petals;
};

} // namespace

Painting petals(const View& view, Mood mood) { return std::make_unique<Petals>(view, mood); }

} // namespace morvelin::wallpapers
