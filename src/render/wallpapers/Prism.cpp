// Sheets of glass that lie over each other and split the light: sharp on one edge, melting away from it.

#include <array>

#include "render/wallpapers/Scenes.h"

namespace morvelin::wallpapers {

namespace {

/// A sheet begins at a straight edge and fades in the direction that its angle points to.
struct Sheet {
    float angle;  ///< degrees from the right, clockwise
    float place;  ///< of the edge, from the middle of the output
    float length; ///< over which it fades
    float shift;  ///< along the colours
    float shine;
};

constexpr std::array<Sheet, 9> kSheets = {{
    {28, -0.62F, 0.55F, 0.26F, 0.10F},
    {-38, -0.22F, 0.42F, -0.24F, 0.06F},
    {64, 0.10F, 0.36F, 0.22F, 0.14F},
    {-12, 0.24F, 0.50F, -0.20F, -0.08F},
    {118, -0.08F, 0.34F, 0.18F, 0.10F},
    {-76, -0.34F, 0.30F, -0.16F, -0.06F},
    {172, 0.30F, 0.46F, 0.20F, 0.12F},
    {204, 0.56F, 0.40F, -0.18F, 0.05F},
    {12, 0.52F, 0.30F, 0.16F, 0.16F},
}};

class Prism final : public Wallpaper {
public:
    explicit Prism(const View& view) : m_view(view) {
        for (std::size_t i = 0; i < kSheets.size(); ++i) {
            const float angle = kSheets[i].angle * 0.0174533F;
            m_normals[i] = {std::cos(angle), std::sin(angle)};
        }
    }

    void paintRow(int row, std::span<Light> pixels) const override {
        paintPoints(m_view, row, pixels, [&](float x, float y) { return lightAt(x, y - 0.5F); });
    }

private:
    struct Normal {
        float x = 0;
        float y = 0;
    };

    [[nodiscard]] Light lightAt(float x, float y) const {
        float place = 0.46F + 0.24F * x - 0.30F * y;
        float shine = 1;
        for (std::size_t i = 0; i < kSheets.size(); ++i) {
            const Sheet& sheet = kSheets[i];
            const float distance = m_normals[i].x * x + m_normals[i].y * y - sheet.place;
            const float covered = edge(distance, m_view.pixel);
            if (covered == 0) continue;
            const float strength = covered * std::exp(-std::max(distance, 0.0F) / sheet.length);
            place += 0.82F * sheet.shift * strength;
            shine += sheet.shine * strength;
        }
        return m_colors.at(place) * shine;
    }

    View m_view;
    std::array<Normal, kSheets.size()> m_normals;
    Palette m_colors{{0, "141052"},     {0.16F, "3A1FB8"}, {0.32F, "8236E8"}, {0.48F, "E04BB4"},
                     {0.62F, "FF7F73"}, {0.76F, "FFC272"}, {0.88F, "BFEBC0"}, {1, "6FD6E8"}};
};

} // namespace

Painting prism(const View& view) { return std::make_unique<Prism>(view); }

} // namespace morvelin::wallpapers
