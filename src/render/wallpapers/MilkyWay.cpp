// The band of the Milky Way rising out of the hills, on a clear night.

#include "render/wallpapers/CoarseField.h"
#include "render/wallpapers/Noise.h"
#include "render/wallpapers/Ridge.h"
#include "render/wallpapers/Scenes.h"
#include "render/wallpapers/Stars.h"

namespace morvelin::wallpapers {

namespace {

/// A place as seen from the galaxy's bright middle: along the band and across it.
struct OnBand {
    float along;
    float across;
};

OnBand onBand(float x, float y) {
    constexpr float kCosine = -0.70F; // up and to the left
    constexpr float kSine = -0.714F;
    const float dx = x - 0.28F;
    const float dy = y - 0.74F;
    const float along = kCosine * dx + kSine * dy;
    return {along, kCosine * dy - kSine * dx + 0.03F * std::sin(3.1F * along + 0.4F)};
}

float bandGlow(const OnBand& place) {
    const float width = 0.13F + 0.10F * bell(place.along, 0.40F);
    return bell(place.across, width) * (0.34F + 0.66F * bell(place.along - 0.04F, 0.62F));
}

class MilkyWay final : public Wallpaper {
public:
    explicit MilkyWay(const View& view)
        : m_view(view),
          m_clouds(view,
                   [clouds = Fractal({.frequency = 3.2F, .octaves = 4, .gain = 0.55F, .seed = 11}, view.pixel)](
                       float x, float y) {
                       const OnBand place = onBand(x, y);
                       return clouds.at(place.along * 0.8F, place.across * 1.3F);
                   }),
          m_dust({.frequency = 5.0F, .octaves = 6, .gain = 0.62F, .seed = 23}, view.pixel),
          m_starDust(view, {.perSquare = 110000, .size = 0.0006F, .brightness = 0.40F, .rarity = 4.0F, .seed = 5},
                     [](float x, float y) { return 0.85F * std::pow(bandGlow(onBand(x, y)), 1.5F); }),
          m_stars(view, {.perSquare = 5200, .size = 0.0006F, .brightness = 0.75F, .rarity = 6, .seed = 6},
                  [](float, float y) { return 0.9F - 0.75F * rise(0.55F, 0.95F, y); }),
          m_brightStars(view, {.perSquare = 60, .size = 0.0013F, .brightness = 1.6F, .rarity = 1.5F, .seed = 9},
                        [](float, float y) { return 0.7F - 0.6F * rise(0.5F, 0.85F, y); }),
          m_farHills(view,
                     [](float x) {
                         return 0.885F + 0.035F * noise(x * 1.7F, 3, 41) + 0.012F * noise(x * 6, 9, 42) +
                                0.003F * noise(x * 31, 1, 43);
                     }),
          m_nearHills(view, [](float x) {
              return 0.965F + 0.030F * noise(x * 1.3F + 5, 7, 44) + 0.008F * noise(x * 9, 2, 45) +
                     0.004F * noise(x * 60, 2, 46);
          }) {}

    void paintRow(int row, std::span<Light> pixels) const override {
        paintPoints(m_view, row, pixels, [&](float x, float y) { return skyAt(x, y); });
        m_starDust.shineOn(row, pixels);
        m_stars.shineOn(row, pixels);
        m_brightStars.shineOn(row, pixels);
        const float y = m_view.y(row);
        for (std::size_t column = 0; column < pixels.size(); ++column) {
            Light& pixel = pixels[column];
            const float depth = y - m_farHills.top(column);
            pixel = mixed(softened(pixel), m_farHill * (1 + 1.6F * std::exp(-depth / 0.012F)),
                          m_farHills.coverage(column, y));
            pixel = mixed(pixel, m_nearHill, m_nearHills.coverage(column, y));
        }
    }

private:
    [[nodiscard]] Light skyAt(float x, float y) const {
        const Light sky = m_sky.at(y) * (1 / (1 + 0.30F * std::abs(x)));
        const OnBand place = onBand(x, y);
        const float glow = bandGlow(place);
        if (glow < 0.004F) return sky;
        const float clouds = m_clouds.at(x, y);
        const float lane = place.across + 0.012F - 0.050F * clouds;
        const float dust = m_dust.at(place.along * 0.8F, place.across * 1.6F) + 0.70F * bell(lane, 0.034F) +
                           0.55F * bell(lane, 0.11F) - 0.50F;
        const float shade = 0.92F * rise(-0.20F, 0.90F, dust);
        const float brightness = glow * std::max(0.0F, 0.80F + 0.50F * clouds);
        const float warmth = bell(place.along - 0.02F, 0.42F) * bell(place.across, 0.16F);
        const Light stars = mixed(m_outer, m_core, warmth) * (0.70F * brightness);
        // Dust takes the blue first.
        const Light passed{1 - 0.80F * shade, 1 - 0.86F * shade, 1 - 0.90F * shade};
        return sky * (1 - 0.35F * shade * glow) + stars * passed;
    }

    View m_view;
    Palette m_sky{{0, "060918"}, {0.4F, "0A1330"}, {0.7F, "112848"}, {0.88F, "1F4B62"}, {1, "4C7A7C"}};
    Light m_outer = lightOf("6F86D6");
    Light m_core = lightOf("FFD9AE");
    Light m_farHill = lightOf("0B1A2A");
    Light m_nearHill = lightOf("04080F");
    CoarseField m_clouds;
    Fractal m_dust;
    Stars m_starDust;
    Stars m_stars;
    Stars m_brightStars;
    Ridge m_farHills;
    Ridge m_nearHills;
};

} // namespace

Painting milkyWay(const View& view) { return std::make_unique<MilkyWay>(view); }

} // namespace morvelin::wallpapers
