// A planet's edge from orbit, in the moment before its sun comes up.

#include "render/wallpapers/CoarseField.h"
#include "render/wallpapers/Noise.h"
#include "render/wallpapers/Scenes.h"
#include "render/wallpapers/Stars.h"

namespace morvelin::wallpapers {

namespace {

constexpr float kRadius = 1.55F;
constexpr float kSunAngle = 0.24F; ///< right of the planet's top

class Cosmos final : public Wallpaper {
public:
    explicit Cosmos(const View& view)
        : m_view(view),
          m_centerX(view.across(0.44F)),
          m_centerY(0.72F + kRadius),
          m_sunX(m_centerX + kRadius * std::sin(kSunAngle)),
          m_sunY(m_centerY - kRadius * std::cos(kSunAngle)),
          m_haze(view, [](float x, float y) { return 0.5F + 0.5F * noise(x * 0.9F, y * 0.9F, 104); }),
          m_clouds({.frequency = 3.0F, .octaves = 6, .gain = 0.55F, .seed = 101}, view.pixel),
          m_stars(view, {.perSquare = 3600, .size = 0.0007F, .brightness = 0.8F, .rarity = 5, .seed = 102},
                  [](float, float) { return 0.8F; }),
          m_brightStars(view, {.perSquare = 40, .size = 0.0013F, .brightness = 1.5F, .rarity = 1.6F, .seed = 103},
                        [](float, float) { return 0.6F; }) {}

    void paintRow(int row, std::span<Light> pixels) const override {
        for (Light& pixel : pixels) pixel = {};
        m_stars.shineOn(row, pixels);
        m_brightStars.shineOn(row, pixels);
        const float y = m_view.y(row);
        for (std::size_t column = 0; column < pixels.size(); ++column) {
            const float x = m_view.x(static_cast<int>(column));
            pixels[column] = softened(lightAt(x, y, pixels[column]));
        }
    }

private:
    [[nodiscard]] Light lightAt(float x, float y, Light stars) const {
        const float dx = x - m_centerX;
        const float dy = y - m_centerY;
        const float above = std::sqrt(dx * dx + dy * dy) - kRadius;
        const float day = bell(std::atan2(dx, -dy) - kSunAngle, 0.34F);
        const float sunX = x - m_sunX;
        const float sunY = y - m_sunY;
        const float toSun = std::sqrt(sunX * sunX + sunY * sunY);
        const float bloom = 1.5F * std::exp(-toSun / 0.018F) + 0.20F * std::exp(-toSun / 0.09F) +
                            0.04F * std::exp(-toSun / 0.45F);
        const Light flare = mixed(m_sun, m_sunGlow, rise(0.0F, 0.13F, toSun)) * bloom;
        const float seen = edge(above, 1.5F * m_view.pixel); // of the sky in this pixel
        Light light{};
        if (seen < 1) light = groundAt(x, y, above, day) + flare * std::exp(std::min(above, 0.0F) / 0.05F);
        if (seen > 0) light = mixed(light, spaceAt(x, y, above, day, 4 * bloom, stars) + flare, seen);
        return light;
    }

    /// `glare` outshines the stars.
    [[nodiscard]] Light spaceAt(float x, float y, float above, float day, float glare, Light stars) const {
        const float hidden = std::min(1.0F, glare + std::exp(-above / 0.05F));
        return stars * (1 - 0.9F * hidden) + m_space.at(m_haze.at(x, y)) + airAbove(above) * (0.22F + 0.78F * day);
    }

    [[nodiscard]] Light airAbove(float above) const {
        const float height = std::max(above, 0.0F);
        return m_airLow * (0.85F * std::exp(-height / 0.006F)) + m_air * (0.50F * std::exp(-height / 0.022F)) +
               m_airHigh * (0.11F * std::exp(-height / 0.09F));
    }

    [[nodiscard]] Light groundAt(float x, float y, float above, float day) const {
        const float depth = std::max(-above, 0.0F);
        // The surface is seen at a slant near the edge.
        const float clouds = m_clouds.at(x * 0.8F, std::sqrt(depth + 0.002F) * 2.6F + 0.1F * x);
        const float lit = std::exp(-depth / 0.10F) * (0.10F + 0.90F * day);
        const Light surface = mixed(m_ocean, m_cloud, 0.75F * rise(-0.15F, 0.65F, clouds));
        return surface * (0.55F * lit) + m_air * (0.55F * std::exp(-depth / 0.020F) * (0.15F + 0.85F * day)) +
               m_dark * (1 - 0.3F * y);
    }

    View m_view;
    float m_centerX;
    float m_centerY;
    float m_sunX;
    float m_sunY;
    CoarseField m_haze;
    Palette m_space{{0, "03040C"}, {0.5F, "060A1C"}, {1, "0B0E2C"}};
    Light m_airLow = lightOf("BFE6FF");
    Light m_air = lightOf("3C8FF0");
    Light m_airHigh = lightOf("2550C8");
    Light m_sun = lightOf("FFF6E8");
    Light m_sunGlow = lightOf("5E8CFF");
    Light m_ocean = lightOf("0E2E5C");
    Light m_cloud = lightOf("A8C8E8");
    Light m_dark = lightOf("02040A");
    Fractal m_clouds;
    Stars m_stars;
    Stars m_brightStars;
};

} // namespace

Painting cosmos(const View& view) { return std::make_unique<Cosmos>(view); }

} // namespace morvelin::wallpapers
