// A fire below the edge of the night: glow, smoke, and sparks that rise.

#include "render/wallpapers/CoarseField.h"
#include "render/wallpapers/Noise.h"
#include "render/wallpapers/Scenes.h"
#include "render/wallpapers/Stars.h"

namespace morvelin::wallpapers {

namespace {

class EmberNight final : public Wallpaper {
public:
    explicit EmberNight(const View& view)
        : m_view(view),
          m_sparks(view, {.perSquare = 1100, .size = 0.0011F, .brightness = 2.6F, .rarity = 3, .seed = 61}, sparksAt,
                   m_fire),
          m_halos(view, {.perSquare = 1100, .size = 0.0065F, .brightness = 0.10F, .rarity = 3, .seed = 61}, sparksAt,
                  m_fire),
          m_blurs(view, {.perSquare = 60, .size = 0.022F, .brightness = 0.055F, .rarity = 1.5F, .seed = 67}, sparksAt,
                  m_fire),
          m_smoke(view, [swirl = Fractal({.frequency = 1.2F, .octaves = 3, .gain = 0.5F, .seed = 64}, view.pixel),
                         wisps = Fractal({.frequency = 1.7F, .octaves = 4, .gain = 0.5F, .seed = 66}, view.pixel)](
                            float x, float y) {
              const float turn = swirl.at(x, y * 0.8F);
              return wisps.at(x + 0.30F * turn, y * 0.60F + 0.22F * turn);
          }) {}

    void paintRow(int row, std::span<Light> pixels) const override {
        paintPoints(m_view, row, pixels, [&](float x, float y) { return glowAt(x, y); });
        for (const Stars* lights : {&m_blurs, &m_halos, &m_sparks}) lights->shineOn(row, pixels);
        for (Light& pixel : pixels) pixel = softened(pixel);
    }

private:
    static float sparksAt(float x, float y) {
        return 0.05F + 0.8F * y * y * rise(-0.5F, 0.5F, noise(x * 1.7F + 0.6F * y, y * 1.3F, 62));
    }

    [[nodiscard]] Light glowAt(float x, float y) const {
        const float smoke = m_smoke.at(x, y);
        const float fire = 0.45F + 0.55F * bell(x + 0.30F * m_view.halfWidth, 0.95F);
        const float height = y - 0.13F * (1 - fire) + 0.07F * smoke * y;
        return m_glow.at(height) * (1 + 0.45F * smoke * rise(0.15F, 0.7F, y)) +
               m_smokeLight * (0.07F * rise(-0.2F, 0.9F, smoke) * (0.10F + y * y) * fire);
    }

    View m_view;
    Palette m_glow{{0, "0A0912"},     {0.35F, "140B14"}, {0.6F, "2E1016"},
                   {0.78F, "5E1B14"}, {0.92F, "A63A14"}, {1, "E06A20"}};
    Palette m_fire{{0, "FF4E1A"}, {0.6F, "FF8432"}, {1, "FFB868"}};
    Light m_smokeLight = lightOf("D8552A");
    Stars m_sparks;
    Stars m_halos; ///< around each spark
    Stars m_blurs; ///< sparks out of focus
    CoarseField m_smoke;
};

} // namespace

Painting emberNight(const View& view) { return std::make_unique<EmberNight>(view); }

} // namespace morvelin::wallpapers
