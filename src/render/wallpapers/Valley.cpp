// A valley between wooded slopes that come down from both sides, with mist between them.

#include "render/wallpapers/Disc.h"
#include "render/wallpapers/Noise.h"
#include "render/wallpapers/Ridge.h"
#include "render/wallpapers/Scenes.h"
#include "render/wallpapers/Stars.h"

namespace morvelin::wallpapers {

namespace {

constexpr float kHorizon = 0.60F;
constexpr int kSlopes = 8;

struct Colors {
    Palette sky;
    Palette slope; ///< by nearness
    Light mist;
    Disc disc;
};

Colors colorsOf(Mood mood, const View& view) {
    if (mood == Mood::Light)
        return {.sky = Palette{{0, "7FC0E0"}, {0.45F, "BFE2EA"}, {0.8F, "FCEFD2"}, {1, "FFF4DC"}},
                .slope = Palette{{0, "B7CFC6"}, {0.3F, "8DB79A"}, {0.6F, "5E9A68"}, {0.82F, "34754C"}, {1, "1B4F38"}},
                .mist = lightOf("F4F3E2"),
                .disc = {view.across(0.54F), 0.36F, 0.050F, lightOf("FFFBEA"), lightOf("FFE9B8") * 0.15F, 0.16F}};
    return {.sky = Palette{{0, "0A1430"}, {0.45F, "1B3458"}, {0.8F, "3F6E86"}, {1, "6FA0A6"}},
            .slope = Palette{{0, "3C6478"}, {0.3F, "274A60"}, {0.6F, "173249"}, {0.82F, "0D2034"}, {1, "070F1E"}},
            .mist = lightOf("5F8E9C"),
            .disc = {view.across(0.54F), 0.27F, 0.036F, lightOf("F4F8FF"), lightOf("84BCFF") * 0.15F, 0.16F}};
}

float nearness(int slope) { return static_cast<float>(slope) / (kSlopes - 1); }

class Valley final : public Wallpaper {
public:
    Valley(const View& view, Mood mood)
        : m_view(view),
          m_mood(mood),
          m_colors(colorsOf(mood, view)),
          m_gap(view.across(0.56F)),
          m_stars(
              view, {.perSquare = 1500, .size = 0.0008F, .brightness = 0.7F, .rarity = 4.5F, .seed = 151},
              [this](float x, float y) { return m_colors.disc.hides(x, y) ? 0 : 0.8F * (1 - rise(0.15F, 0.45F, y)); }) {
        for (int slope = 0; slope < kSlopes; ++slope) m_slopes.push_back(outline(slope));
    }

    void paintRow(int row, std::span<Light> pixels) const override {
        const float y = m_view.y(row);
        const Light sky = m_colors.sky.at(y / kHorizon);
        paintPoints(m_view, row, pixels, [&](float x, float) { return m_colors.disc.over(sky, x, y); });
        if (m_mood == Mood::Dark) m_stars.shineOn(row, pixels);
        for (std::size_t column = 0; column < pixels.size(); ++column) {
            Light& light = pixels[column];
            for (int slope = 0; slope < kSlopes; ++slope) {
                const Ridge& ridge = m_slopes[static_cast<std::size_t>(slope)];
                const float covered = ridge.coverage(column, y);
                if (covered > 0) light = mixed(light, slopeAt(slope, y - ridge.smoothTop(column)), covered);
            }
        }
    }

private:
    /// Slopes come down from the left and the right in turn, the nearer the lower.
    [[nodiscard]] Ridge outline(int slope) const {
        const float near = nearness(slope);
        const float foot = kHorizon + 0.005F + 0.44F * near * near;
        const float side = slope % 2 == 0 ? -1.0F : 1.0F;
        const float reach = 0.10F + 0.50F * near * m_view.halfWidth;
        const auto seed = static_cast<std::uint32_t>(160 + slope);
        const Fractal trees({.frequency = 3.4F + 3 * near, .octaves = 7, .gain = 0.52F, .seed = seed}, m_view.pixel);
        const float height = 0.34F + 0.20F * near;
        return {m_view, [&](float x) {
                    const float outward = side * (x - m_gap) - reach + 0.16F;
                    const float climb = height * rise(0.0F, 0.95F, outward) + 0.20F * std::max(outward, 0.0F);
                    const float wooded = trees.at(x, near * 7) * (0.010F + 0.10F * rise(-0.1F, 0.5F, outward));
                    return foot - climb - 0.6F * wooded + (outward < 0 ? -outward * 0.35F : 0);
                }};
    }

    [[nodiscard]] Light slopeAt(int slope, float depth) const {
        const float near = nearness(slope);
        const float mist = rise(0.0F, 0.30F, depth) * 0.62F * (1 - near) * (1 - near);
        return mixed(m_colors.slope.at(near) * (1 - 0.30F * near * rise(0, 0.35F, depth)), m_colors.mist, mist);
    }

    View m_view;
    Mood m_mood;
    Colors m_colors;
    float m_gap; ///< x of the valley's far end
    Stars m_stars;
    std::vector<Ridge> m_slopes;
};

} // namespace

Painting valley(const View& view, Mood mood) { return std::make_unique<Valley>(view, mood); }

} // namespace morvelin::wallpapers
