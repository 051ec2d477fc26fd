// Colours in the three spaces that drawing needs: sRGB as chosen, OKLab to mix without mud, Y'CbCr as pictures hold.
#pragma once

#include <algorithm>
#include <cmath>
#include <string_view>

#include "core/Geometry.h"

namespace morvelin {

/// sRGB components, 0..1, with the transfer curve applied.
struct Rgb {
    double red = 0;
    double green = 0;
    double blue = 0;
};

/// B. Ottosson's perceptual space (2020): equal steps look equal, and a mix of two colours stays as rich as they are.
struct Oklab {
    double lightness = 0;
    double a = 0;
    double b = 0;

    friend Oklab operator+(const Oklab& x, const Oklab& y) { return {x.lightness + y.lightness, x.a + y.a, x.b + y.b}; }
    friend Oklab operator*(const Oklab& x, double factor) { return {x.lightness * factor, x.a * factor, x.b * factor}; }
};

/// BT.709, limited range, as 8-bit code values with fractions.
struct Ycc {
    double y = 16;
    double cb = 128;
    double cr = 128;
};

/// Six hexadecimal digits.
[[nodiscard]] Rgb rgbFromHex(std::string_view digits);
[[nodiscard]] Oklab oklabFromRgb(const Rgb& color);
/// Colours outside sRGB are cut off at its borders.
[[nodiscard]] Rgb rgbFromOklab(const Oklab& color);

[[nodiscard]] inline Oklab mixed(const Oklab& from, const Oklab& to, double share) {
    return from * (1 - share) + to * share;
}

/// The colour at `alpha` over nothing: premultiplied, and linear in its arguments, so that sums of weighted colours
/// come out right.
[[nodiscard]] inline Ycc yccFromPremultiplied(const Rgb& color, double alpha) {
    const double luma = 0.2126 * color.red + 0.7152 * color.green + 0.0722 * color.blue;
    return {16 * alpha + 219 * luma, 128 * alpha + 224 * (color.blue - luma) / 1.8556,
            128 * alpha + 224 * (color.red - luma) / 1.5748};
}

[[nodiscard]] inline Ycc yccFromRgb(const Rgb& color) { return yccFromPremultiplied(color, 1); }

} // namespace morvelin
