// Dunes in low light: each has a lit face and one in the shade, and a crest that winds down between them.

#include <array>

#include "render/wallpapers/Disc.h"
#include "render/wallpapers/Noise.h"
#include "render/wallpapers/Ridge.h"
#include "render/wallpapers/Scenes.h"
#include "render/wallpapers/Stars.h"

namespace morvelin::wallpapers {

namespace {

/// From the back to the front.
struct Dune {
    float peak; ///< place of the peak, as a share of the width
    float top;  ///< y of the peak
    float foot; ///< y far from it
    float width;
    float wind; ///< how the crest winds
};

constexpr std::array<Dune, 5> kDunes = {{
    {0.70F, 0.46F, 0.60F, 0.62F, 0.7F},
    {0.16F, 0.50F, 0.68F, 0.70F, -0.9F},
    {0.88F, 0.58F, 0.82F, 0.75F, 1.1F},
    {0.36F, 0.66F, 0.94F, 0.95F, -1.2F},
    {0.98F, 0.80F, 1.12F, 1.00F, 1.0F},
}};

struct Colors {
    Palette sky;
    Palette lit;   ///< by nearness
    Palette shade; ///< by nearness
    Disc disc;
};

Colors colorsOf(Mood mood, const View& view) {
    if (mood == Mood::Light)
        return {.sky = Palette{{0, "9CC9DC"}, {0.4F, "CFE0DC"}, {0.75F, "F8E3C4"}, {1, "FFDDB0"}},
                .lit = Palette{{0, "F3CFA0"}, {0.5F, "F2BE82"}, {1, "EBA765"}},
                .shade = Palette{{0, "D9A982"}, {0.5F, "C0805A"}, {1, "9C5B42"}},
                .disc = {view.across(0.25F), 0.22F, 0.055F, lightOf("FFF6DE"), lightOf("FFE2B0") * 0.13F, 0.13F}};
    return {.sky = Palette{{0, "0B1030"}, {0.4F, "1D2356"}, {0.75F, "4A3A78"}, {1, "8A5A86"}},
            .lit = Palette{{0, "7A648F"}, {0.5F, "67548A"}, {1, "574A86"}},
            .shade = Palette{{0, "352F62"}, {0.5F, "211F4A"}, {1, "121330"}},
            .disc = {view.across(0.24F), 0.20F, 0.040F, lightOf("F4EEFF"), lightOf("9AA0FF") * 0.13F, 0.13F}};
}

class Dunes final : public Wallpaper {
public:
    Dunes(const View& view, Mood mood)
        : m_view(view),
          m_mood(mood),
          m_colors(colorsOf(mood, view)),
          m_stars(
              view, {.perSquare = 1700, .size = 0.0008F, .brightness = 0.8F, .rarity = 4.5F, .seed = 131},
              [this](float x, float y) { return m_colors.disc.hides(x, y) ? 0 : 0.8F * (1 - rise(0.15F, 0.5F, y)); }) {
        for (const Dune& dune : kDunes)
            m_outlines.emplace_back(view, [&](float x) {
                const float away = (x - view.across(dune.peak)) / dune.width;
                const float side = 1 / (1 + 3.2F * std::pow(std::abs(away), 1.55F));
                return dune.foot - (dune.foot - dune.top) * side + 0.006F * noise(x * 3, dune.peak * 9, 133);
            });
    }

    void paintRow(int row, std::span<Light> pixels) const override {
        const float y = m_view.y(row);
        const Light sky = m_colors.sky.at(y / 0.68F);
        paintPoints(m_view, row, pixels, [&](float x, float) { return m_colors.disc.over(sky, x, y); });
        if (m_mood == Mood::Dark) m_stars.shineOn(row, pixels);
        for (std::size_t column = 0; column < pixels.size(); ++column) {
            const float x = m_view.x(static_cast<int>(column));
            for (std::size_t i = 0; i < kDunes.size(); ++i) {
                const float covered = m_outlines[i].coverage(column, y);
                if (covered > 0)
                    pixels[column] = mixed(pixels[column], sandAt(i, x, y, y - m_outlines[i].top(column)), covered);
            }
        }
    }

private:
    [[nodiscard]] Light sandAt(std::size_t index, float x, float y, float depth) const {
        const Dune& dune = kDunes[index];
        const float near = static_cast<float>(index) / (kDunes.size() - 1);
        const float down = std::max(y - dune.top, 0.0F);
        // The crest starts at the peak and winds towards the viewer.
        const float crest = m_view.across(dune.peak) +
                            dune.wind * (0.55F * down + 0.10F * std::sin(9 * down) + 0.9F * down * down);
        const float beyond = x - crest;
        const float shadow = rise(-0.0015F - 0.015F * down, 0.0015F + 0.06F * down, beyond);
        const float ripple = std::sin(190 * (y + 0.30F * x + 0.015F * noise(x * 7, y * 7, 134)) / (0.5F + near)) *
                             rise(0.01F, 0.10F, depth) * (0.2F + 0.8F * near) * (1 - shadow);
        const Light lit = m_colors.lit.at(near) * (1.08F - 0.55F * down + 0.028F * ripple);
        const Light shade = m_colors.shade.at(near) * (0.88F + 0.75F * rise(0, 0.5F, beyond));
        const Light haze = m_colors.sky.at(1);
        return mixed(mixed(lit, shade, shadow), haze, (0.40F - 0.34F * near) * rise(0.3F, 0.0F, depth));
    }

    View m_view;
    Mood m_mood;
    Colors m_colors;
    Stars m_stars;
    std::vector<Ridge> m_outlines;
};

} // namespace

Painting dunes(const View& view, Mood mood) { return std::make_unique<Dunes>(view, mood); }

} // namespace morvelin::wallpapers
