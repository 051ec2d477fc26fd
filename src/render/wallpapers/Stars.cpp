#include "render/wallpapers/Stars.h"

#include <cmath>

#include "render/wallpapers/Noise.h"

namespace morvelin::wallpapers {

namespace {

/// A glow smaller than this many pixels would flicker as the camera moves; it is widened and dimmed by as much.
constexpr float kLeastRadius = 0.75F;
constexpr float kReach = 3; ///< radii

} // namespace

const Palette& Stars::ofTheSky() {
    static const Palette colors{{0, "FFC9A0"}, {0.3F, "FFE9D6"}, {0.55F, "FFFFFF"}, {0.8F, "D9E4FF"}, {1, "A9C2FF"}};
    return colors;
}

Stars::Stars(const View& view, const Form& form, const Density& density, const Palette& colors)
    : m_rows(static_cast<std::size_t>(view.size.height)) {
    // One star may stand in each cell of a grid around the middle, wherever the sides of the output are.
    const float cell = 1 / std::sqrt(form.perSquare);
    const int columns = static_cast<int>(std::ceil(view.halfWidth / cell)) + 1;
    const int rows = static_cast<int>(std::ceil(1 / cell));
    for (int row = 0; row < rows; ++row) {
        for (int column = -columns; column < columns; ++column) {
            const float x = (static_cast<float>(column) + chance(column, row, form.seed)) * cell;
            const float y = (static_cast<float>(row) + chance(column, row, form.seed + 1)) * cell;
            if (chance(column, row, form.seed + 2) >= density(x, y)) continue;
            const float magnitude = std::pow(chance(column, row, form.seed + 3), form.rarity);
            const float wanted = form.size * (0.6F + 0.9F * magnitude) / view.pixel;
            const float radius = std::max(wanted, kLeastRadius);
            const float dimmed = std::pow(wanted / radius, 2.0F);
            const Light light = colors.at(chance(column, row, form.seed + 4)) *
                                (form.brightness * dimmed * (0.03F + 0.97F * magnitude));
            add({(x + view.halfWidth) / view.pixel, y / view.pixel, radius, light}, view.size.height);
        }
    }
}

void Stars::add(const Star& star, int height) {
    const int first = std::max(0, static_cast<int>(std::floor(star.y - kReach * star.radius)));
    const int last = std::min(height - 1, static_cast<int>(std::ceil(star.y + kReach * star.radius)));
    for (int row = first; row <= last; ++row) m_rows[static_cast<std::size_t>(row)].push_back(star);
}

void Stars::shineOn(int row, std::span<Light> pixels) const {
    const int width = static_cast<int>(pixels.size());
    for (const Star& star : m_rows[static_cast<std::size_t>(row)]) {
        const float down = (static_cast<float>(row) + 0.5F - star.y) / star.radius;
        const float reach = kReach * star.radius;
        const int first = std::max(0, static_cast<int>(star.x - reach));
        const int last = std::min(width - 1, static_cast<int>(star.x + reach));
        for (int column = first; column <= last; ++column) {
            const float across = (static_cast<float>(column) + 0.5F - star.x) / star.radius;
            pixels[static_cast<std::size_t>(column)] += star.light * std::exp(-down * down - across * across);
        }
    }
}

} // namespace morvelin::wallpapers
