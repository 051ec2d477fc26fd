// Three plain shapes of light printed with coarse grain: a sun, tubes, and rings.

#include "render/wallpapers/Noise.h"
#include "render/wallpapers/Scenes.h"

namespace morvelin::wallpapers {

namespace {

/// Grains to the output's height.
constexpr float kFineness = 620;

/// Grain moves a place along the poster's colours, most where these are of middle brightness.
float grainAt(float x, float y) {
    return noise(x * kFineness, y * kFineness, 81) + 0.5F * noise(y * kFineness * 0.47F, x * kFineness * 0.47F, 82);
}

/// Along the colours of a poster.
using PlaceAt = float (*)(const View& view, float x, float y);

/// A sun whose upper rim is sharp and whose lower half melts into the night.
float sunAt(const View& view, float x, float y) {
    const float distance = std::hypot(x - view.across(0.52F), y - 0.92F);
    const float inward = 0.70F - distance;
    const float rim = edge(inward, 2 * view.pixel);
    const float inside = 1.0F - 0.75F * std::max(inward, 0.0F) - 0.78F * std::max(y - 0.22F, 0.0F) + 0.05F * x;
    const float outside = 0.06F + 0.50F * std::exp(inward / 0.30F) * rise(-0.1F, 1.3F, y);
    return outside + (inside - outside) * rim;
}

/// Soft tubes that lean to the right.
float tubesAt(const View&, float x, float y) {
    const float lean = x * 0.86F + (y - 0.5F) * 0.50F + 0.06F * std::sin(3.2F * y + 1.4F * x);
    const float turns = 2.1F * lean + 0.12F;
    const float across = turns - std::floor(turns);
    const float gap = std::min(across, 1 - across);
    const float round = std::sqrt(std::max(0.0F, 1 - (2 * across - 0.72F) * (2 * across - 0.72F) * 0.78F));
    return 0.02F + 0.86F * round * rise(0, 0.20F, gap) * (1.0F - 0.52F * y);
}

/// Rings around a far corner; each is bright at its outer edge.
float ringsAt(const View& view, float x, float y) {
    constexpr float kWidth = 0.235F;
    const float distance = std::hypot(x - view.across(0.94F), y - 1.10F);
    const float turns = distance / kWidth;
    const float inside = turns - std::floor(turns);
    const float step = edge((1 - inside) * kWidth, 2 * view.pixel) *
                       edge(inside * kWidth + 0.5F * view.pixel, view.pixel);
    const float fading = std::exp(-distance / 1.5F);
    return 0.08F + (0.16F + 0.80F * std::pow(inside, 2.2F)) * fading * step + 0.10F * (1 - y);
}

class GrainPoster final : public Wallpaper {
public:
    GrainPoster(const View& view, Palette colors, PlaceAt placeAt)
        : m_view(view),
          m_colors(std::move(colors)),
          m_placeAt(placeAt) {}

    void paintRow(int row, std::span<Light> pixels) const override {
        paintPoints(m_view, row, pixels, [&](float x, float y) {
            const float place = std::clamp(m_placeAt(m_view, x, y), 0.0F, 1.0F);
            const float strength = 0.035F + 0.16F * place * (1 - place);
            return m_colors.at(place + strength * grainAt(x, y));
        });
    }

private:
    View m_view;
    Palette m_colors;
    PlaceAt m_placeAt;
};

} // namespace

Painting grainPoster(const View& view, Poster poster) {
    switch (poster) {
    case Poster::Ember:
        return std::make_unique<GrainPoster>(
            view,
            Palette{
                {0, "12060A"}, {0.2F, "3A0C12"}, {0.45F, "A8240F"}, {0.7F, "F8691C"}, {0.88F, "FFAE4E"}, {1, "FFE0A8"}},
            sunAt);
    case Poster::Violet:
        return std::make_unique<GrainPoster>(view,
                                             Palette{{0, "0D0620"},
                                                     {0.25F, "2A0F6E"},
                                                     {0.5F, "6A28D8"},
                                                     {0.72F, "B26BFF"},
                                                     {0.88F, "E6B8FF"},
                                                     {1, "FFF0FF"}},
                                             tubesAt);
    case Poster::Indigo:
        return std::make_unique<GrainPoster>(view,
                                             Palette{{0, "070B2A"},
                                                     {0.25F, "141C66"},
                                                     {0.5F, "2D3FD0"},
                                                     {0.72F, "6A83FF"},
                                                     {0.88F, "B5C6FF"},
                                                     {1, "EEF3FF"}},
                                             ringsAt);
    }
    return nullptr;
}

} // namespace morvelin::wallpapers
