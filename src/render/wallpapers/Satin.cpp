// A sheet of satin in violet and teal, lying in wide folds.

#include "render/wallpapers/Scenes.h"

namespace morvelin::wallpapers {

namespace {

/// How far across the folds a place lies, and in which direction that grows.
struct Across {
    float value;
    float slopeX;
    float slopeY;
};

/// Adds a sine of a place to `across`, and its slope.
void bend(Across& across, float strength, float perX, float perY, float shift, float x, float y) {
    const float angle = perX * x + perY * y + shift;
    const float slope = strength * std::cos(angle);
    across.value += strength * std::sin(angle);
    across.slopeX += slope * perX;
    across.slopeY += slope * perY;
}

class Satin final : public Wallpaper {
public:
    explicit Satin(const View& view) : m_view(view) {}

    void paintRow(int row, std::span<Light> pixels) const override {
        paintPoints(m_view, row, pixels, [&](float x, float y) { return lightAt(x, y - 0.5F); });
    }

private:
    [[nodiscard]] Light lightAt(float x, float y) const {
        // Folds run from the lower left to the upper right, and bend as they go.
        Across across{0.52F * x + 0.85F * y, 0.52F, 0.85F};
        bend(across, 0.150F, 1.9F, -1.3F, 0.4F, x, y);
        bend(across, 0.050F, 3.4F, 2.7F, 2.1F, x, y);
        bend(across, 0.022F, -3.1F, 7.3F, 0.9F, x, y);
        // Large folds, and smaller ones that sit on them.
        const float large = 9.5F * across.value;
        const float small = 23.0F * across.value + 1.6F * std::sin(2.3F * x - 1.1F * y);
        const float height = std::sin(large) + 0.20F * std::sin(small);
        const float slope = 0.105F * (9.5F * std::cos(large) + 0.20F * 23.0F * std::cos(small));
        const float dx = slope * across.slopeX;
        const float dy = slope * across.slopeY;
        const float length = 1 / std::sqrt(1 + dx * dx + dy * dy);
        const float lit = std::max(0.0F, (0.46F * dx + 0.50F * dy + 0.73F) * length);
        const float facing = std::max(0.0F, (0.25F * dx + 0.27F * dy + 0.93F) * length);
        const float hue = 0.48F + 0.40F * x + 0.26F * y + 0.10F * height;
        const float sheen = std::pow(facing, 26.0F);
        return m_colors.at(hue) * (0.16F + 0.95F * lit * (0.82F + 0.18F * height)) + m_sheen.at(hue) * (0.30F * sheen);
    }

    View m_view;
    Palette m_colors{{0, "2B0A72"},     {0.2F, "4A1CB8"},  {0.42F, "5B3FE0"},
                     {0.58F, "2C6FD2"}, {0.78F, "109CAC"}, {1, "0B7F80"}};
    Palette m_sheen{{0, "B58CFF"}, {0.45F, "BFB0FF"}, {0.65F, "9AD4FF"}, {1, "8CFFE4"}};
};

} // namespace

Painting satin(const View& view) { return std::make_unique<Satin>(view); }

} // namespace morvelin::wallpapers
