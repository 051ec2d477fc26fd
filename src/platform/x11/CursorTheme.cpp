#include "platform/x11/CursorTheme.h"

#include <cmath>
#include <cstring>
#include <memory>

#include <X11/Xcursor/Xcursor.h>

namespace morvelin {

namespace {

/// How much denser than shown an image is wanted: a pointer is drawn at up to 3 times its size under a zoom.
constexpr int kDensity = 4;

struct DestroyImage {
    void operator()(XcursorImage* image) const { XcursorImageDestroy(image); }
};
using ThemeImage = std::unique_ptr<XcursorImage, DestroyImage>;

/// The theme's image whose nominal size is nearest to the wanted one.
ThemeImage loadImage(const std::string& name, const std::string& theme, int nominalSize) {
    return ThemeImage(XcursorLibraryLoadImage(name.c_str(), theme.empty() ? nullptr : theme.c_str(), nominalSize));
}

/// Xcursor keeps premultiplied ARGB words, which in memory are the bytes B G R A.
Image imageOf(const XcursorImage& source) {
    Image image{{static_cast<int>(source.width), static_cast<int>(source.height)}, {}};
    image.pixels.resize(std::size_t{source.width} * source.height * 4);
    std::memcpy(image.pixels.data(), source.pixels, image.pixels.size());
    return image;
}

/// The nominal size at which the theme's pointer is what is shown, to the pixel.
std::optional<int> shownNominalSize(const Image& shown, const std::string& name, const std::string& theme) {
    // A theme's image is about as large as its nominal size, give or take its margins.
    const int largest = 2 * std::max(shown.size.width, shown.size.height);
    int last = 0;
    for (int wanted = 8; wanted <= largest; wanted += 4) {
        const ThemeImage candidate = loadImage(name, theme, wanted);
        if (!candidate) return std::nullopt;
        const int nominal = static_cast<int>(candidate->size);
        if (nominal == last) continue;
        last = nominal;
        if (imageOf(*candidate) == shown) return nominal;
    }
    return std::nullopt;
}

PointerShape scaledDown(const XcursorImage& dense, double density, std::uint64_t identity) {
    return {identity,
            imageOf(dense),
            dense.width / density,
            dense.height / density,
            dense.xhot / density,
            dense.yhot / density};
}

} // namespace

PointerShape denserShape(PointerShape shown, const std::string& name, const std::string& theme) {
    if (name.empty() || shown.image.isEmpty()) return shown;
    const auto nominal = shownNominalSize(shown.image, name, theme);
    if (!nominal) return shown;
    const ThemeImage dense = loadImage(name, theme, *nominal * kDensity);
    if (!dense || static_cast<int>(dense->size) <= *nominal) return shown;
    return scaledDown(*dense, static_cast<double>(dense->size) / *nominal, shown.identity);
}

std::optional<PointerShape> themeArrow(const std::string& theme, int nominalSize) {
    // What shows is the theme's size that is nearest to the wanted one.
    const ThemeImage shown = loadImage("left_ptr", theme, nominalSize);
    if (!shown || shown->size == 0) return std::nullopt;
    const ThemeImage dense = loadImage("left_ptr", theme, static_cast<int>(shown->size) * kDensity);
    if (!dense || dense->size == 0) return std::nullopt;
    return scaledDown(*dense, static_cast<double>(dense->size) / shown->size, 0);
}

} // namespace morvelin
