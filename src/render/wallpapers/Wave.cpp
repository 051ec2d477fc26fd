// Long waves one behind the other, as if cut out of paper: each throws a shadow on the next.

#include <array>

#include "render/wallpapers/Ridge.h"
#include "render/wallpapers/Scenes.h"

namespace morvelin::wallpapers {

namespace {

constexpr int kWaves = 9;

float crestAt(int wave, float x) {
    const auto n = static_cast<float>(wave);
    const float swing = 0.115F * std::sin(1.55F * x + 0.62F * n + 0.5F) +
                        0.045F * std::sin(3.3F * x - 0.85F * n + 1.9F);
    return 0.10F + 0.108F * n + swing + 0.10F * x * std::sin(0.9F * n);
}

class Wave final : public Wallpaper {
public:
    explicit Wave(const View& view) : m_view(view) {
        for (int wave = 0; wave < kWaves; ++wave)
            m_crests.emplace_back(view, [wave](float x) { return crestAt(wave, x); });
    }

    void paintRow(int row, std::span<Light> pixels) const override {
        const float y = m_view.y(row);
        for (std::size_t column = 0; column < pixels.size(); ++column) pixels[column] = lightAt(column, y);
    }

private:
    /// From the nearest wave to the furthest, until nothing more shows through.
    [[nodiscard]] Light lightAt(std::size_t column, float y) const {
        const float x = m_view.x(static_cast<int>(column));
        Light sum;
        float left = 1;
        float shade = 0; // from the waves in front
        for (int wave = kWaves - 1; wave >= 0 && left > 0; --wave) {
            const Ridge& crest = m_crests[static_cast<std::size_t>(wave)];
            const float depth = y - crest.top(column);
            if (const float covered = crest.coverage(column, y); covered > 0) {
                sum += shaded(waveAt(wave, x, depth), shade) * (left * covered);
                left *= 1 - covered;
            }
            shade = std::max(shade, std::exp(std::min(depth, 0.0F) / 0.045F));
        }
        return sum + shaded(m_colors.at(0), shade) * left;
    }

    [[nodiscard]] Light shaded(Light light, float shade) const { return mixed(light, light * m_shadow, 0.85F * shade); }
    [[nodiscard]] Light waveAt(int wave, float x, float depth) const {
        const float deep = std::max(depth, 0.0F);
        const float place = (static_cast<float>(wave) + 1) / kWaves - 0.13F * std::exp(-deep / 0.05F) + 0.05F * x;
        return m_colors.at(place) * (1 + 0.25F * std::exp(-deep / 0.012F));
    }

    View m_view;
    Light m_shadow{0.22F, 0.36F, 0.48F}; ///< what is left of light in it
    std::vector<Ridge> m_crests;
    Palette m_colors{{0, "E4F6F5"},     {0.18F, "A9E3E6"}, {0.36F, "57BFDA"}, {0.55F, "2389C6"},
                     {0.75F, "1A4F9E"}, {0.9F, "132F72"},  {1, "0B1B4A"}};
};

} // namespace

Painting wave(const View& view) { return std::make_unique<Wave>(view); }

} // namespace morvelin::wallpapers
