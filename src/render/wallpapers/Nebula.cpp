// A cloud of gas among the stars, lit from within.

#include "render/wallpapers/CoarseField.h"
#include "render/wallpapers/Noise.h"
#include "render/wallpapers/Scenes.h"
#include "render/wallpapers/Stars.h"

namespace morvelin::wallpapers {

namespace {

/// How far the gas drifts.
constexpr float kDrift = 0.15F;

class Nebula final : public Wallpaper {
public:
    explicit Nebula(const View& view)
        : m_view(view),
          m_filaments({.frequency = 2.6F, .octaves = 5, .gain = 0.55F, .seed = 97}, view.pixel),
          m_driftX(view, [](float x, float y) { return drift(x, y, 93); }),
          m_driftY(view, [](float x, float y) { return drift(x + 5.2F, y + 1.3F, 94); }),
          m_gas(view, [this, gas = Fractal({.frequency = 1.9F, .octaves = 5, .gain = 0.55F, .seed = 91}, view.pixel)](
                          float x,
                          float y) { return gas.at(x + kDrift * m_driftX.at(x, y), y + kDrift * m_driftY.at(x, y)); }),
          m_stars(view, {.perSquare = 4200, .size = 0.0007F, .brightness = 0.8F, .rarity = 5, .seed = 95},
                  [](float, float) { return 0.8F; }),
          m_brightStars(view, {.perSquare = 46, .size = 0.0015F, .brightness = 1.8F, .rarity = 1.6F, .seed = 96},
                        [](float, float) { return 0.6F; }) {}

    void paintRow(int row, std::span<Light> pixels) const override {
        for (Light& pixel : pixels) pixel = {};
        m_stars.shineOn(row, pixels);
        const float y = m_view.y(row);
        for (std::size_t column = 0; column < pixels.size(); ++column)
            addGas(m_view.x(static_cast<int>(column)), y, pixels[column]);
        m_brightStars.shineOn(row, pixels);
        for (Light& pixel : pixels) pixel = softened(pixel);
    }

private:
    static float drift(float x, float y, std::uint32_t seed) {
        return noise(x * 1.7F, y * 1.7F, seed) + 0.5F * noise(x * 3.9F, y * 3.9F, seed + 10);
    }

    void addGas(float x, float y, Light& pixel) const {
        const float driftX = m_driftX.at(x, y);
        const float driftY = m_driftY.at(x, y);
        // The cloud lies from the lower left to the upper right.
        const float lane = 0.55F * x + 0.83F * (y - 0.50F) + 0.11F * driftX;
        const float body = bell(lane, 0.34F) * (0.55F + 0.45F * bell(x - 0.12F, 0.75F));
        const float density = rise(-0.80F, 1.30F, m_gas.at(x, y) + 1.20F * body - 0.45F);
        const float shadedShare = rise(0.05F, 0.5F, body);
        float shade = 0;
        if (shadedShare > 0) {
            const float threads = m_filaments.crestsAt(x + kDrift * driftX, y + kDrift * driftY);
            shade = shadedShare * rise(0.55F, 0.95F, threads + 0.12F * driftY);
        }
        const float glow = density * (0.12F + 0.95F * density * body);
        const float heat = 0.12F + 0.62F * glow + 0.14F * driftY + 0.08F * x;
        pixel = pixel * (1 - 0.75F * density) + m_night;
        pixel += m_gasColor.at(heat) * (0.92F * glow * (1 - 0.80F * shade));
    }

    View m_view;
    Light m_night = lightOf("060713");
    Palette m_gasColor{{0, "14548C"},    {0.2F, "2A56C4"}, {0.4F, "7A3CCB"},
                       {0.6F, "D83F8E"}, {0.8F, "FF8660"}, {1, "FFD9A6"}};
    Fractal m_filaments;
    CoarseField m_driftX;
    CoarseField m_driftY;
    CoarseField m_gas;
    Stars m_stars;
    Stars m_brightStars;
};

} // namespace

Painting nebula(const View& view) { return std::make_unique<Nebula>(view); }

} // namespace morvelin::wallpapers
