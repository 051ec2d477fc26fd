// The colours of the rainbow behind a pane of fluted glass.

#include "render/wallpapers/Scenes.h"

namespace morvelin::wallpapers {

namespace {

constexpr float kFlute = 0.0635F; ///< width of one

class Spectrum final : public Wallpaper {
public:
    explicit Spectrum(const View& view) : m_view(view) {}

    void paintRow(int row, std::span<Light> pixels) const override {
        paintPoints(m_view, row, pixels, [&](float x, float y) { return lightAt(x, y - 0.5F); });
    }

private:
    [[nodiscard]] Light lightAt(float x, float y) const {
        const float turns = x / kFlute;
        const float across = turns - std::floor(turns); // in a flute, from its left to its right
        const float bent = across - 0.5F;
        // A flute is a lens: it shows what is behind it from one side to the other, and more of it than its own width.
        const Light behind = sceneAt(x - bent * kFlute + 4.2F * kFlute * bent * (1 + 0.9F * bent * bent), y);
        const float seam = std::min(across, 1 - across) * kFlute;
        const float roundness = 0.80F + 0.28F * std::sqrt(std::max(0.0F, 1 - 4 * bent * bent)) - 0.10F * bent;
        const float glint = 0.035F * bell(across - 0.18F, 0.09F);
        const float groove = 1 - 0.22F * std::exp(-seam / 0.0022F);
        return behind * (roundness * groove) + Light{1, 1, 1} * glint;
    }

    /// The light behind the glass: the spectrum along a bow, bright in its middle.
    [[nodiscard]] Light sceneAt(float x, float y) const {
        const float share = x / (2 * std::max(m_view.halfWidth, 0.4F)) + 0.5F;
        const float bow = share + 0.16F * (y + 0.5F) * (y + 0.5F) - 0.06F + 0.05F * std::sin(3 * y + 4 * share);
        const float brightness = 0.34F + 0.74F * bell(y + 0.05F + 0.07F * std::sin(6 * share), 0.52F);
        return m_colors.at(0.04F + 0.92F * bow) * brightness;
    }

    View m_view;
    Palette m_colors{{0, "3A1C9E"},     {0.12F, "4450E6"}, {0.26F, "2A9DF0"}, {0.39F, "26C9B0"}, {0.51F, "8ADB5E"},
                     {0.63F, "FFD84F"}, {0.76F, "FF8F3C"}, {0.88F, "F4486C"}, {1, "B22A94"}};
};

} // namespace

Painting spectrum(const View& view) { return std::make_unique<Spectrum>(view); }

} // namespace morvelin::wallpapers
