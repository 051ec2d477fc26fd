#include "render/BackgroundArt.h"

#include <array>
#include <cmath>
#include <numbers>
#include <string_view>

#include "core/base/Smoothstep.h"
#include "render/BackgroundPresets.h"
#include "render/MeshShapes.h"

namespace morvelin {

namespace {

/// A pool of light: a place in a square of side 1 around the middle, a colour's place in the palette, its pull.
struct Pool {
    double x;
    double y;
    double color; ///< 0 the first colour, 1 the last
    double strength;
};

/// Bright at the upper left, deep at the lower right, with two counter-lights so that no straight band shows.
constexpr std::array<Pool, 6> kPools = {{
    {-0.46, -0.42, 0.00, 1.25},
    {0.10, -0.14, 0.42, 1.00},
    {0.50, 0.46, 1.00, 1.35},
    {0.52, -0.50, 0.62, 0.75},
    {-0.50, 0.48, 0.58, 0.80},
    {0.16, 0.62, 0.88, 0.60},
}};

/// The folds of a brand gradient: a lit fold is lighter and nearer to the palette's first colour, a shaded one nearer
/// to its last; lightness alone would turn cream to olive.
constexpr double kFoldLight = 0.016;
constexpr double kFoldShift = 0.11;

/// A colour on the way through all colours of a palette: a Catmull-Rom curve, so that no crease shows at a colour.
Oklab alongPalette(std::span<const Oklab> colors, double place) {
    if (colors.size() == 1) return colors[0];
    const std::size_t last = colors.size() - 1;
    const double scaled = std::clamp(place, 0.0, 1.0) * static_cast<double>(last);
    const auto i = std::min(static_cast<std::size_t>(scaled), last - 1);
    const double t = scaled - static_cast<double>(i);
    const Oklab& from = colors[i];
    const Oklab& to = colors[i + 1];
    // Past the ends the curve runs straight on.
    const Oklab before = i > 0 ? colors[i - 1] : from * 2 + to * -1;
    const Oklab after = i + 1 < last ? colors[i + 2] : to * 2 + from * -1;
    return (from * 2 + (to + before * -1) * t + (before * 2 + from * -5 + to * 4 + after * -1) * (t * t) +
            (before * -1 + from * 3 + to * -3 + after) * (t * t * t)) *
           0.5;
}

/// A number of its own for each name, the same in every run.
double fractionOf(std::string_view name) {
    std::uint32_t hash = 2166136261U;
    for (const char letter : name) hash = (hash ^ static_cast<std::uint8_t>(letter)) * 16777619U;
    return static_cast<double>(hash >> 8) / (1 << 24);
}

} // namespace

BackgroundArt::BackgroundArt(const std::optional<Background>& background, PixelSize output)
    : m_aspect(static_cast<double>(output.width) / std::max(output.height, 1)) {
    if (!background) {
        chooseColors(std::array{Rgb{}});
        return;
    }
    m_hasGrain = background->type == BackgroundType::Gradient || background->type == BackgroundType::Wallpaper;
    switch (background->type) {
    case BackgroundType::Gradient:
        chooseGradient(background->gradientPresetID);
        m_shapes = meshShapes(BackgroundPresets::gradient(background->gradientPresetID), output);
        break;
    case BackgroundType::SolidColor: {
        // A colour that lets light through shows the black behind it.
        const CodableColor& color = background->solidColor;
        const auto over = [&](double part) { return std::clamp(part, 0.0, 1.0) * std::clamp(color.alpha, 0.0, 1.0); };
        chooseColors(std::array{Rgb{over(color.red), over(color.green), over(color.blue)}});
        break;
    }
    case BackgroundType::Wallpaper:
    case BackgroundType::Image: {
        const auto& colors = BackgroundPresets::wallpaper(background->wallpaperName).hexColors;
        chooseColors(std::array{rgbFromHex(colors[0]), rgbFromHex(colors[1]), rgbFromHex(colors[2])});
        m_style = Style::Linear;
        break;
    }
    }
}

void BackgroundArt::chooseColors(std::span<const Rgb> colors) {
    for (const Rgb& color : colors) m_colors.push_back(oklabFromRgb(color));
}

void BackgroundArt::chooseGradient(std::string_view id) {
    const auto& preset = BackgroundPresets::gradient(id);
    const bool isMesh = preset.id.starts_with("mesh-");
    const std::size_t used = isMesh ? 2 : preset.hexColors.size(); // the others tint the figures
    for (std::size_t i = 0; i < used; ++i) m_colors.push_back(oklabFromRgb(rgbFromHex(preset.hexColors[i])));
    m_turn = (fractionOf(preset.id) - 0.5) * 0.9;
    switch (preset.rendering) {
    case BackgroundPresets::Rendering::Legacy: m_style = isMesh ? Style::Pools : Style::Linear; break;
    case BackgroundPresets::Rendering::Brand: m_style = Style::Pools; break;
    case BackgroundPresets::Rendering::Soft: m_style = Style::Glow; break;
    }
}

Rgb BackgroundArt::colorAt(double u, double v) const {
    const double x = u - 0.5;
    const double y = v - 0.5;
    switch (m_style) {
    case Style::Uniform: return rgbFromOklab(m_colors.front());
    case Style::Linear: return rgbFromOklab(linearColor(x, y));
    case Style::Pools: return rgbFromOklab(pooledColor(x, y));
    case Style::Glow: return rgbFromOklab(glowingColor(x, y));
    }
    return {};
}

/// From the upper left corner to the lower right one, eased at both ends.
Oklab BackgroundArt::linearColor(double x, double y) const {
    const double place = (x + y + 1) / 2;
    return alongPalette(m_colors, 0.75 * place + 0.25 * smoothstep(place));
}

/// Weights by inverse distance, seen through slow waves, with folds of light and shade along them: silk.
Oklab BackgroundArt::pooledColor(double x, double y) const {
    const double c = std::cos(m_turn);
    const double s = std::sin(m_turn);
    const double rx = c * x - s * y;
    const double ry = s * x + c * y;
    const double wx = rx + 0.075 * std::sin(4.1 * ry + 2.0 + 5 * m_turn) + 0.03 * std::sin(7.3 * rx - 3.1 * ry);
    const double wy = ry + 0.075 * std::sin(3.7 * rx + 0.6 - 4 * m_turn) + 0.03 * std::sin(6.1 * ry + 2.7 * rx);
    const double fold = std::sin(6.5 * (wx + 0.8 * wy) + 1.8 * std::sin(3.1 * wy - 1.7 * wx) + 9 * m_turn) *
                        (0.6 + 0.4 * std::cos(5.3 * wx - 2.2 * wy));
    Oklab sum;
    double weights = 0;
    for (const Pool& pool : kPools) {
        const double dx = wx - pool.x;
        const double dy = wy - pool.y;
        const double near = dx * dx + dy * dy + 0.075;
        const double weight = pool.strength / (near * near);
        sum = sum + alongPalette(m_colors, pool.color - kFoldShift * fold) * weight;
        weights += weight;
    }
    Oklab color = sum * (1 / weights);
    color.lightness += kFoldLight * fold;
    return color;
}

/// The last colour rises from below out of the first, through the ones between.
Oklab BackgroundArt::glowingColor(double x, double y) const {
    const double dx = (x - 0.75 * m_turn) * std::min(m_aspect, 2.0) * 0.62;
    const double dy = (y - 0.58) * 0.95;
    const double distance = std::sqrt(dx * dx + dy * dy + 0.004);
    const double wave = 0.035 * std::sin(5 * x + 1.2) + 0.03 * std::sin(4.2 * y - 2.6 * x);
    return alongPalette(m_colors, 1 - smoothstep((distance + wave) / 1.02));
}

} // namespace morvelin
