// The art of the backgrounds: what colour is where, for any size of output. Used once, when a stage is made.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "core/Style.h"
#include "platform/Picture.h"
#include "render/ColorMath.h"

namespace morvelin {

/// A figure of a mesh background: a pane of tinted glass. Lengths in pixels of the output.
struct ArtShape {
    enum class Kind { Circle, Bar, Diamond };

    /// What a pane lays over a point.
    struct Veil {
        Rgb color;
        double alpha = 0;
    };

    Kind kind = Kind::Circle;
    double centerX = 0;
    double centerY = 0;
    double halfWidth = 0;
    double halfHeight = 0;
    double cornerRadius = 0; ///< of a bar
    double angle = 0;        ///< radians, clockwise
    Rgb top;                 ///< the fill runs from this colour at the figure's top
    Rgb bottom;              ///< to this one
    double topAlpha = 1;
    double bottomAlpha = 1;
    double rimWidth = 1; ///< over which the light that a pane's edge catches fades inwards

    /// How much of the pixel around a point lies inside, 0..1.
    [[nodiscard]] double coverage(double x, double y) const;
    /// Of a point inside.
    [[nodiscard]] Veil veilAt(double x, double y) const;
    /// Every pixel that the figure touches.
    [[nodiscard]] PixelBox bounds() const;
};

/// One background, as smooth colours and the figures on them.
class BackgroundArt {
public:
    /// Without a background everything is black.
    BackgroundArt(const std::optional<Background>& background, PixelSize output);

    /// At a point of the output's unit square. It changes so slowly that a hundred samples across tell all.
    [[nodiscard]] Rgb colorAt(double u, double v) const;
    [[nodiscard]] std::span<const ArtShape> shapes() const { return m_shapes; }
    [[nodiscard]] bool isUniform() const { return m_style == Style::Uniform; }
    [[nodiscard]] bool hasGrain() const { return m_hasGrain; }

private:
    enum class Style { Uniform, Linear, Pools, Glow };

    void chooseGradient(std::string_view id);
    void chooseColors(std::span<const Rgb> colors);
    [[nodiscard]] Oklab linearColor(double x, double y) const;
    [[nodiscard]] Oklab pooledColor(double x, double y) const;
    [[nodiscard]] Oklab glowingColor(double x, double y) const;

    Style m_style = Style::Uniform;
    bool m_hasGrain = false;
    double m_aspect = 1;
    double m_turn = 0; ///< radians: gives each palette a flow of its own
    std::vector<Oklab> m_colors;
    std::vector<ArtShape> m_shapes;
};

} // namespace morvelin
