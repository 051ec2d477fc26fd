// Northern lights over a still lake.

#include <array>

#include "render/wallpapers/Noise.h"
#include "render/wallpapers/Ridge.h"
#include "render/wallpapers/Scenes.h"
#include "render/wallpapers/Stars.h"

namespace morvelin::wallpapers {

namespace {

constexpr float kShore = 0.84F;

/// A curtain of light hangs from the sky down to a line that winds across it.
struct Curtain {
    float level; ///< y of its lower edge, in the middle
    float slant;
    float swing;
    float height;
    float strength;
    float shift;
};

constexpr std::array<Curtain, 3> kCurtains = {{
    {0.56F, -0.16F, 0.060F, 0.46F, 1.00F, 0.3F},
    {0.40F, 0.20F, 0.055F, 0.30F, 0.62F, 3.1F},
    {0.69F, 0.04F, 0.030F, 0.24F, 0.34F, 5.6F},
}};

/// What a curtain is at one column.
struct Fold {
    float edge;   ///< y of its lower edge
    float height; ///< over which it fades upwards
    float light;
};
using Folds = std::array<Fold, kCurtains.size()>;

Fold foldOf(const Curtain& curtain, float x) {
    const float s = curtain.shift;
    const float wind = std::sin(1.9F * x + s) + 0.40F * std::sin(4.6F * x + 1.7F * s) + 0.10F * std::sin(11 * x + s);
    const float slope = 1.9F * std::cos(1.9F * x + s) + 1.84F * std::cos(4.6F * x + 1.7F * s) +
                        1.1F * std::cos(11 * x + s);
    const float rays = 0.66F + 0.26F * noise(x * 6 + s, s, 211) + 0.17F * noise(x * 19 + s, s, 212) +
                       0.08F * noise(x * 57, s, 213);
    const float patches = rise(-0.65F, 0.45F, noise(x * 1.05F + 2.3F * s, 5, 214));
    // Where the curtain turns its edge to the viewer there is more of it in line.
    const float depth = 0.75F + 0.11F * std::abs(slope);
    return {curtain.level + curtain.slant * x + curtain.swing * wind, curtain.height * (0.55F + 0.7F * rays),
            curtain.strength * std::max(rays, 0.05F) * patches * depth};
}

class AuroraGlow final : public Wallpaper {
public:
    explicit AuroraGlow(const View& view)
        : m_view(view),
          m_stars(view, {.perSquare = 2600, .size = 0.0007F, .brightness = 0.7F, .rarity = 5, .seed = 201},
                  [](float, float y) { return 0.8F - 0.6F * rise(0.4F, 0.8F, y); }),
          m_farHills(view,
                     [](float x) {
                         return kShore - 0.030F - 0.045F * noise(x * 1.2F + 9, 4, 207) - 0.010F * noise(x * 5, 4, 208);
                     }),
          m_hills(view, [](float x) {
              const float trees = 0.5F + 0.5F * noise(x * 2.1F, 8, 209);
              return kShore + 0.001F - 0.028F * std::max(0.0F, 0.4F + noise(x * 1.6F + 4, 1, 202)) -
                     (0.011F * std::abs(noise(x * 62, 3, 204)) + 0.007F * std::abs(noise(x * 131, 3, 205))) * trees;
          }) {
        for (int column = 0; column < view.size.width; ++column) {
            Folds folds{};
            for (std::size_t i = 0; i < folds.size(); ++i) folds[i] = foldOf(kCurtains[i], view.x(column));
            m_folds.push_back(folds);
        }
    }

    void paintRow(int row, std::span<Light> pixels) const override {
        const float y = m_view.y(row);
        if (y < kShore)
            paintSky(row, y, pixels);
        else
            paintLake(y, pixels);
    }

private:
    void paintSky(int row, float y, std::span<Light> pixels) const {
        for (std::size_t column = 0; column < pixels.size(); ++column) pixels[column] = skyAt(column, y);
        m_stars.shineOn(row, pixels);
        for (std::size_t column = 0; column < pixels.size(); ++column) {
            const Light sky = mixed(softened(pixels[column]), m_farHillColor, m_farHills.coverage(column, y));
            pixels[column] = mixed(sky, m_hillColor, m_hills.coverage(column, y));
        }
    }

    /// The sky upside down; ripples spread what they mirror.
    void paintLake(float y, std::span<Light> pixels) const {
        const float depth = (y - kShore) / (1 - kShore);
        const float near = 0.12F + depth;
        for (std::size_t column = 0; column < pixels.size(); ++column) {
            const float x = m_view.x(static_cast<int>(column));
            const float ripple = noise(x * 2.2F / near, 8 / near, 206) * rise(0, 0.12F, depth);
            const float mirrored = kShore - 0.05F - (y - kShore) * 2.4F + 0.035F * ripple * (0.4F + depth);
            const Light sky = softened(skyAt(column, mirrored));
            const float trees = 0.85F * (1 - rise(0.02F, 0.34F, depth + 0.06F * ripple));
            pixels[column] = mixed(sky * (0.55F - 0.15F * depth), m_hillColor, trees);
        }
    }

    [[nodiscard]] Light skyAt(std::size_t column, float y) const {
        Light light = m_sky.at(y / kShore);
        for (const Fold& fold : m_folds[column]) {
            const float up = (fold.edge - y) / fold.height;
            const float body = up > 0 ? std::exp(-2.7F * up) : std::exp(13 * up);
            const float bright = fold.light * body;
            if (bright < 0.002F) continue;
            light += m_colors.at(up) * (0.85F * bright * (1 - 0.25F * rise(0.12F, 0, std::abs(up))));
        }
        return light;
    }

    View m_view;
    Palette m_sky{{0, "070A22"}, {0.45F, "0B1838"}, {0.8F, "103248"}, {1, "1E5A60"}};
    Palette m_colors{{0, "7CFFB8"}, {0.15F, "35F09A"}, {0.42F, "18BFA8"}, {0.68F, "4A74F0"}, {1, "9A46E0"}};
    Light m_farHillColor = lightOf("0B2230");
    Light m_hillColor = lightOf("040B12");
    Stars m_stars;
    Ridge m_farHills;
    Ridge m_hills;
    std::vector<Folds> m_folds;
};

} // namespace

Painting auroraGlow(const View& view) { return std::make_unique<AuroraGlow>(view); }

} // namespace morvelin::wallpapers
