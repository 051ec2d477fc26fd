// A suspension bridge between hills, its feet in the fog of the bay.

#include <array>

#include "render/wallpapers/CoarseField.h"
#include "render/wallpapers/Disc.h"
#include "render/wallpapers/Noise.h"
#include "render/wallpapers/Ridge.h"
#include "render/wallpapers/Scenes.h"
#include "render/wallpapers/Stars.h"

namespace morvelin::wallpapers {

namespace {

constexpr float kDeck = 0.660F;
constexpr float kTowerTop = 0.245F;
constexpr float kTowerWidth = 0.052F;
constexpr float kLegPlace = 0.021F; ///< of a tower's legs, to either side of its middle

struct Colors {
    Palette sky;
    Light farHill;
    Light nearHill;
    Light steel;
    Light steelShade;
    Light fog;
    Light fogLit;
    Disc disc;
};

Colors colorsOf(Mood mood, const View& view) {
    if (mood == Mood::Light)
        return {.sky = Palette{{0, "6FA9D0"}, {0.35F, "A9CFE0"}, {0.65F, "F6DFC8"}, {0.85F, "FBC9A6"}, {1, "F5B99C"}},
                .farHill = lightOf("B9B4BE"),
                .nearHill = lightOf("8C93A6"),
                .steel = lightOf("D2573A"),
                .steelShade = lightOf("9E3A2E"),
                .fog = lightOf("E9D9D2"),
                .fogLit = lightOf("FFF3E6"),
                .disc = {view.across(0.56F), 0.50F, 0.060F, lightOf("FFF6E0"), lightOf("FFF3E6") * 0.12F, 0.15F}};
    return {.sky = Palette{{0, "070D24"}, {0.35F, "122048"}, {0.65F, "2C3468"}, {0.85F, "5A4478"}, {1, "6E4E78"}},
            .farHill = lightOf("252A52"),
            .nearHill = lightOf("171C3C"),
            .steel = lightOf("7E3440"),
            .steelShade = lightOf("2E1830"),
            .fog = lightOf("2A3260"),
            .fogLit = lightOf("6A6FA4"),
            .disc = {view.across(0.56F), 0.22F, 0.034F, lightOf("F6F0FF"), lightOf("6A6FA4") * 0.12F, 0.15F}};
}

class Bridge final : public Wallpaper {
public:
    Bridge(const View& view, Mood mood)
        : m_view(view),
          m_mood(mood),
          m_colors(colorsOf(mood, view)),
          m_towers{view.across(0.22F), view.across(0.22F) + 1.02F},
          m_stars(
              view, {.perSquare = 1500, .size = 0.0008F, .brightness = 0.7F, .rarity = 4.5F, .seed = 191},
              [this](float x, float y) { return m_colors.disc.hides(x, y) ? 0 : 0.8F * (1 - rise(0.2F, 0.5F, y)); }),
          m_farHills(
              view,
              [](float x) { return 0.63F - 0.055F * noise(x * 1.3F + 2, 1, 192) - 0.012F * noise(x * 6, 2, 193); }),
          m_nearHills(view,
                      [&](float x) {
                          const float fromRight = view.halfWidth - x;
                          return 0.80F - 0.20F * bell(fromRight, 0.55F) - 0.020F * noise(x * 4, 5, 194) -
                                 0.006F * noise(x * 17, 5, 195);
                      }),
          m_fog(view,
                [banks = Fractal({.frequency = 1.6F, .octaves = 5, .gain = 0.5F, .seed = 196}, view.pixel)](
                    float x, float y) { return banks.at(x * 0.8F, y * 2.2F + 0.15F * banks.at(x * 1.5F, y * 2)); }) {}

    void paintRow(int row, std::span<Light> pixels) const override {
        const float y = m_view.y(row);
        const Light sky = m_colors.sky.at(y / 0.72F);
        paintPoints(m_view, row, pixels, [&](float x, float) { return m_colors.disc.over(sky, x, y); });
        if (m_mood == Mood::Dark) m_stars.shineOn(row, pixels);
        for (std::size_t column = 0; column < pixels.size(); ++column) {
            const float x = m_view.x(static_cast<int>(column));
            Light& light = pixels[column];
            light = mixed(light, m_colors.farHill, m_farHills.coverage(column, y));
            light = mixed(light, m_colors.fog, fogAt(x, y, 0.60F, 0.10F) * 0.85F);
            light = mixed(light, steelAt(x, y), steelCoverage(x, y));
            if (m_mood == Mood::Dark) light += m_lamp * lampsAt(x, y);
            light = mixed(light, m_colors.nearHill, m_nearHills.coverage(column, y));
            const float fog = fogAt(x, y, 0.76F, 0.15F);
            light = mixed(light, mixed(m_colors.fog, m_colors.fogLit, rise(-0.4F, 0.6F, m_fog.at(x, y - 0.02F))), fog);
        }
    }

private:
    /// Fog lies from `level` down; its upper side is ragged over `depth`.
    [[nodiscard]] float fogAt(float x, float y, float level, float depth) const {
        return rise(level - depth, level + depth, y + 0.11F * m_fog.at(x, y));
    }

    /// y of the main cable: it hangs between the towers and runs down to the shores outside of them.
    [[nodiscard]] float cableAt(float x) const {
        const float span = m_towers[1] - m_towers[0];
        if (x >= m_towers[0] && x <= m_towers[1]) {
            const float place = 2 * (x - m_towers[0]) / span - 1;
            return kDeck - 0.022F - (kDeck - kTowerTop - 0.022F) * place * place;
        }
        // Past the shore it only has to stay below the deck.
        const float out = std::min(x < m_towers[0] ? m_towers[0] - x : x - m_towers[1], 1.2F);
        return kTowerTop + 0.98F * out - 0.40F * out * out;
    }

    [[nodiscard]] float steelCoverage(float x, float y) const {
        const float pixel = m_view.pixel;
        const auto bar = [&](float distance, float halfWidth) { return edge(halfWidth - std::abs(distance), pixel); };
        float covered = bar(y - kDeck, 0.0085F);
        for (const float tower : m_towers) covered = std::max(covered, towerCoverage(x - tower, y));
        const float cable = cableAt(x);
        const float toTower = std::min(std::abs(x - m_towers[0]), std::abs(x - m_towers[1]));
        if (y < kDeck + 0.01F && toTower > kLegPlace) {
            const float slope = (cableAt(x + pixel) - cable) / pixel;
            covered = std::max(covered, bar((y - cable) / std::sqrt(1 + slope * slope), 0.0030F));
        }
        if (y > cable && y < kDeck && toTower > 1.4F * kLegPlace) {
            constexpr float kSpacing = 0.0255F;
            const float off = std::remainder(x - m_towers[0], kSpacing);
            covered = std::max(covered, 0.75F * bar(off, 0.0007F) * std::min(1.0F, 0.0014F / pixel + 0.25F));
        }
        return covered;
    }

    /// Two legs that step in as they rise, and braces between them.
    [[nodiscard]] float towerCoverage(float x, float y) const {
        if (y < kTowerTop - 0.004F || std::abs(x) > kTowerWidth) return 0;
        const float pixel = m_view.pixel;
        const float height = (kDeck - y) / (kDeck - kTowerTop);
        const float steps = std::floor(std::clamp(height, 0.0F, 0.99F) * 4);
        const float legWidth = 0.0092F - 0.0013F * steps;
        const float legs = edge(legWidth - std::abs(std::abs(x) - kLegPlace), pixel) * edge(y - kTowerTop, pixel);
        float braces = 0;
        for (const float brace : {0.985F, 0.75F, 0.50F, 0.25F}) {
            const float distance = (height - brace) * (kDeck - kTowerTop);
            braces = std::max(braces, edge(0.0115F - std::abs(distance), pixel) * edge(0.0225F - std::abs(x), pixel));
        }
        return std::max(legs, braces);
    }

    [[nodiscard]] Light steelAt(float x, float y) const {
        const float side = std::min(std::abs(x - m_towers[0] - kLegPlace), std::abs(x - m_towers[1] - kLegPlace));
        const Light steel = mixed(m_colors.steel, m_colors.steelShade, 0.55F * (side < 0.012F ? 1.0F : 0.0F));
        return mixed(steel, m_colors.fog, 0.10F + 0.25F * rise(0.4F, 0.75F, y));
    }

    /// Lamps along the deck, and one on each tower.
    [[nodiscard]] float lampsAt(float x, float y) const {
        constexpr float kReach = 0.10F;
        if (std::abs(y - kDeck) > kReach && std::abs(y - kTowerTop) > kReach) return 0;
        constexpr float kSpacing = 0.051F;
        const float off = std::remainder(x - m_towers[0] - 0.5F * kSpacing, kSpacing);
        const float lamp = std::hypot(off, y - kDeck + 0.018F);
        float light = 0.85F * std::exp(-lamp / 0.0022F) + 0.10F * std::exp(-lamp / 0.012F);
        for (const float tower : m_towers) {
            const float top = std::hypot(x - tower, y - kTowerTop + 0.010F);
            light += 0.9F * std::exp(-top / 0.0026F) + 0.12F * std::exp(-top / 0.02F);
        }
        return light;
    }

    View m_view;
    Mood m_mood;
    Colors m_colors;
    Light m_lamp = lightOf("FFC98A");
    std::array<float, 2> m_towers;
    Stars m_stars;
    Ridge m_farHills;
    Ridge m_nearHills;
    CoarseField m_fog;
};

} // namespace

Painting bridge(const View& view, Mood mood) { return std::make_unique<Bridge>(view, mood); }

} // namespace morvelin::wallpapers
