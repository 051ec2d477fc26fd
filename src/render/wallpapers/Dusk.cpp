// The sea just after sunset, with long clouds lit from below.

#include "render/wallpapers/Noise.h"
#include "render/wallpapers/Ridge.h"
#include "render/wallpapers/Scenes.h"
#include "render/wallpapers/Stars.h"

namespace morvelin::wallpapers {

namespace {

constexpr float kHorizon = 0.70F;

class Dusk final : public Wallpaper {
public:
    explicit Dusk(const View& view)
        : m_view(view),
          m_sunX(view.across(0.64F)),
          m_clouds({.frequency = 1.25F, .octaves = 5, .gain = 0.5F, .seed = 3}, view.pixel),
          m_stars(view, {.perSquare = 700, .size = 0.0009F, .brightness = 0.5F, .rarity = 4, .seed = 8},
                  [](float, float y) { return 0.8F - rise(0, 0.34F, y); }),
          m_land(view, [&](float x) {
              const float fromLeft = x + view.halfWidth;
              return kHorizon + 0.002F - 0.075F * bell(fromLeft, 0.46F) - 0.03F * bell(fromLeft - 0.42F, 0.22F) -
                     0.006F * bell(fromLeft, 0.9F) * (1 + noise(x * 14, 2, 6));
          }) {}

    void paintRow(int row, std::span<Light> pixels) const override {
        const float y = m_view.y(row);
        paintPoints(m_view, row, pixels, [&](float x, float) { return y < kHorizon ? skyAt(x, y) : seaAt(x, y); });
        if (y < kHorizon) m_stars.shineOn(row, pixels);
        for (std::size_t column = 0; column < pixels.size() && y < kHorizon; ++column)
            pixels[column] = mixed(pixels[column], m_landColor, m_land.coverage(column, y));
    }

private:
    [[nodiscard]] Light skyAt(float x, float y) const {
        const float height = y / kHorizon;
        const float dx = x - m_sunX;
        const float dy = y - kHorizon;
        Light sky = m_sky.at(height) * (1 / (1 + 0.18F * std::abs(dx)));
        const float glow = 0.45F * std::exp(-(dx * dx * 2.2F + dy * dy * 16)) +
                           0.5F * std::exp(-(dx * dx + dy * dy) * 50);
        sky = mixed(sky, m_sun, glow);
        // Clouds get flatter and closer towards the horizon, and are lit from there.
        const float stretch = 3.2F / (1.12F - height);
        const float cloud = m_clouds.at(x * 0.9F + 3, stretch);
        const float below = m_clouds.at(x * 0.9F + 3, stretch + 0.10F);
        const float covered = rise(0.0F, 0.55F, cloud) * (0.30F + 0.6F * rise(0.1F, 0.8F, height)) *
                              (1 - rise(0.93F, 1.0F, height));
        const float lit = rise(-0.12F, 0.42F, cloud - below) * std::exp(-dx * dx * 0.9F);
        return mixed(sky, mixed(m_cloudShade.at(height), m_cloudLit.at(height), lit), covered);
    }

    /// The sky upside down, broken by ripples that grow towards the front.
    [[nodiscard]] Light seaAt(float x, float y) const {
        const float depth = (y - kHorizon) / (1 - kHorizon);
        const float near = 0.09F + depth;
        const float ripple = (noise(x * 2.4F / near, 9 / near, 21) + 0.6F * noise(x * 5.5F / near, 21 / near, 22)) *
                             rise(0, 0.10F, depth);
        const float mirrored = 1 - 0.95F * depth + 0.16F * ripple * (0.35F + depth);
        const float dx = (x - m_sunX) / (0.10F + 0.30F * depth);
        const float glint = std::exp(-dx * dx) * (0.30F + 0.55F * rise(-0.1F, 0.9F, ripple)) * (1 - 0.65F * depth);
        const Light sky = m_sky.at(mirrored) * (1 / (1 + 0.18F * std::abs(x - m_sunX)));
        return mixed(mixed(sky * Light{0.66F, 0.62F, 0.72F}, m_deep, 0.45F * depth),
                     mixed(m_sun, m_ember, rise(0, 0.8F, depth)), glint);
    }

    View m_view;
    float m_sunX;
    Palette m_sky{{0, "1A1B48"},     {0.3F, "3D2F74"}, {0.55F, "84478C"},
                  {0.75F, "CF6688"}, {0.9F, "F49A7C"}, {1, "FFD09A"}};
    Palette m_cloudShade{{0, "2B2657"}, {0.5F, "5A3A78"}, {0.85F, "9C5480"}, {1, "D58080"}};
    Palette m_cloudLit{{0, "5F4A92"}, {0.5F, "E0709A"}, {0.85F, "FFA878"}, {1, "FFD9A0"}};
    Light m_sun = lightOf("FFE0AE");
    Light m_ember = lightOf("F08872"); ///< of the sun on the water near by
    Light m_deep = lightOf("2A2459");
    Light m_landColor = lightOf("2C1D46");
    Fractal m_clouds;
    Stars m_stars;
    Ridge m_land;
};

} // namespace

Painting dusk(const View& view) { return std::make_unique<Dusk>(view); }

} // namespace morvelin::wallpapers
