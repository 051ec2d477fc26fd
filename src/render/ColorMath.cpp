#include "render/ColorMath.h"

#include <charconv>

namespace morvelin {

namespace {

double linear(double coded) { return coded <= 0.04045 ? coded / 12.92 : std::pow((coded + 0.055) / 1.055, 2.4); }

double coded(double linear) {
    const double x = std::clamp(linear, 0.0, 1.0);
    return x <= 0.0031308 ? x * 12.92 : 1.055 * std::pow(x, 1 / 2.4) - 0.055;
}

double component(std::string_view digits, std::size_t place) {
    int value = 0;
    std::from_chars(digits.data() + place, digits.data() + place + 2, value, 16);
    return value / 255.0;
}

} // namespace

Rgb rgbFromHex(std::string_view digits) {
    if (digits.size() != 6) return {};
    return {component(digits, 0), component(digits, 2), component(digits, 4)};
}

// The matrices are those of the space's definition.
Oklab oklabFromRgb(const Rgb& color) {
    const double r = linear(color.red);
    const double g = linear(color.green);
    const double b = linear(color.blue);
    const double l = std::cbrt(0.4122214708 * r + 0.5363325363 * g + 0.0514459929 * b);
    const double m = std::cbrt(0.2119034982 * r + 0.6806995451 * g + 0.1073969566 * b);
    const double s = std::cbrt(0.0883024619 * r + 0.2817188376 * g + 0.6299787005 * b);
    return {0.2104542553 * l + 0.7936177850 * m - 0.0040720468 * s,
            1.9779984951 * l - 2.4285922050 * m + 0.4505937099 * s,
            0.0259040371 * l + 0.7827717662 * m - 0.8086757660 * s};
}

Rgb rgbFromOklab(const Oklab& color) {
    const double lRoot = color.lightness + 0.3963377774 * color.a + 0.2158037573 * color.b;
    const double mRoot = color.lightness - 0.1055613458 * color.a - 0.0638541728 * color.b;
    const double sRoot = color.lightness - 0.0894841775 * color.a - 1.2914855480 * color.b;
    const double l = lRoot * lRoot * lRoot;
    const double m = mRoot * mRoot * mRoot;
    const double s = sRoot * sRoot * sRoot;
    return {coded(4.0767416621 * l - 3.3077115913 * m + 0.2309699292 * s),
            coded(-1.2684380046 * l + 2.6097574011 * m - 0.3413193965 * s),
            coded(-0.0041960863 * l - 0.7034186147 * m + 1.7076147010 * s)};
}

} // namespace morvelin
