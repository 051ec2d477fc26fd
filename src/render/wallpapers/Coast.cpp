// A beach from above: dry sand, wet sand, foam, and water that gets deeper.

#include "render/wallpapers/CoarseField.h"
#include "render/wallpapers/Noise.h"
#include "render/wallpapers/Scenes.h"

namespace morvelin::wallpapers {

namespace {

class Coast final : public Wallpaper {
public:
    explicit Coast(const View& view)
        : m_view(view),
          m_lace({.frequency = 15, .octaves = 4, .gain = 0.6F, .seed = 31}, view.pixel),
          m_ripples({.frequency = 7, .octaves = 4, .gain = 0.55F, .seed = 37}, view.pixel),
          m_grains({.frequency = 90, .octaves = 3, .gain = 0.8F, .seed = 39}, view.pixel),
          m_offshore(view, [&](float x, float y) { return offshoreAt(x, y); }),
          m_surf(view,
                 [](float x, float y) {
                     return 0.022F * noise(x * 5 + 9, y * 5 + 4, 51) + 0.010F * noise(x * 12 + 9, y * 12 + 4, 52);
                 }),
          m_wash(view, [](float x, float y) {
              return 0.013F * noise(x * 5, y * 5, 51) + 0.006F * noise(x * 12, y * 12, 52);
          }) {}

    void paintRow(int row, std::span<Light> pixels) const override {
        paintPoints(m_view, row, pixels, [&](float x, float y) { return lightAt(x, y); });
    }

private:
    /// How far out at sea a place lies; below 0 on land.
    [[nodiscard]] float offshoreAt(float x, float y) const {
        const float straight = 0.66F * (x + 0.18F * m_view.halfWidth) - 0.75F * (y - 0.56F);
        return straight + 0.075F * noise(x * 1.4F + 7, y * 1.4F, 33) + 0.028F * noise(x * 3.7F, y * 3.7F, 34);
    }

    [[nodiscard]] Light lightAt(float x, float y) const {
        const float offshore = m_offshore.at(x, y) + m_wash.at(x, y);
        const float wet = edge(offshore, 2 * m_view.pixel);
        Light light = wet < 1 ? sandAt(x, y, -offshore) : Light{};
        if (wet > 0) light = mixed(light, waterAt(x, y, offshore), wet);
        return mixed(light, m_foam, foamAt(x, y, offshore));
    }

    [[nodiscard]] Light sandAt(float x, float y, float inland) const {
        const float grains = m_grains.at(x, y);
        const float drifts = noise(x * 5 + y * 9, y * 4 - x * 2, 35);
        // The wave before came up further, and left an edge.
        const float wet = 1 - rise(-0.010F, 0.006F, inland - 0.040F - 0.9F * m_surf.at(x, y));
        const Light sand = m_sand.at(inland / 0.6F) * (1 + 0.05F * grains + 0.02F * drifts * rise(0.1F, 0.2F, inland));
        return mixed(sand, sand * m_wetness, wet);
    }

    [[nodiscard]] Light waterAt(float x, float y, float offshore) const {
        const float ripples = m_ripples.crestsAt(x, y);
        const float shallow = std::exp(-offshore / 0.22F);
        const float net = std::pow(ripples, 5.0F);
        const float swell = noise(offshore * 16 + 0.6F * x, x * 1.2F + y * 1.2F, 36);
        return m_water.at(offshore / 1.35F + 0.012F * swell) *
               (1 + (0.10F + 0.45F * shallow) * (net - 0.16F) + 0.05F * swell);
    }

    /// The edge of the wash, and two lines of breaking waves further out, all torn into lace on their outer side.
    [[nodiscard]] float foamAt(float x, float y, float offshore) const {
        if (offshore < -0.01F || offshore > 0.30F) return 0;
        const float lace = m_lace.crestsAt(x, y);
        const float drift = m_surf.at(x, y);
        const auto line = [&](float place, float width, float tear) {
            const float behind = offshore - place;
            const float front = rise(-2.5F * m_view.pixel, 2.5F * m_view.pixel, behind);
            const float tail = std::exp(-std::max(behind, 0.0F) / width);
            return front * rise(tear, tear + 0.25F, lace * (0.35F + 0.85F * tail)) * rise(0.02F, 0.30F, tail);
        };
        return std::min(1.0F, 0.95F * line(0.0F, 0.024F, 0.36F) + 0.85F * line(0.082F + drift, 0.030F, 0.46F) +
                                  0.6F * line(0.172F + 1.3F * drift, 0.020F, 0.56F));
    }

    View m_view;
    Palette m_sand{{0, "D9BC92"}, {0.1F, "E0C59A"}, {0.3F, "EAD3AA"}, {1, "F4E4C4"}};
    Palette m_water{{0, "BFE9DC"},     {0.06F, "8FDCCF"}, {0.18F, "3DBDBE"},
                    {0.36F, "1490AC"}, {0.62F, "0C5F8C"}, {1, "0A3A68"}};
    Light m_wetness{0.74F, 0.70F, 0.67F};
    Light m_foam = lightOf("FBFEFC");
    Fractal m_lace;
    Fractal m_ripples;
    Fractal m_grains;
    CoarseField m_offshore;
    CoarseField m_surf; ///< how the lines of breaking waves wander
    CoarseField m_wash;
};

} // namespace

Painting coast(const View& view) { return std::make_unique<Coast>(view); }

} // namespace morvelin::wallpapers
