#include "render/TapTapHand.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "core/base/Smoothstep.h"
#include "render/Canvas.h"
#include "render/HandArt.h"
#include "render/PicturePlacement.h"
#include "render/TileShadow.h"

namespace morvelin {

namespace {

/// Below this a hand is not seen.
constexpr double kSmallestOpacity = 0.001;
/// A hand of this many pixels or fewer is no hand.
constexpr double kSmallestHeight = 2;
/// Of a hand, as fractions of the picture's height.
constexpr double kSmallestSize = 0.02;
constexpr double kLargestSize = 0.9;
/// A lifted hand has gone back by this fraction of its height.
constexpr double kRise = 0.12;
/// Of the shadow, as fractions of the hand's height: how far below the hand it falls, and how soft it is.
constexpr double kShadowDrop = 0.012;
constexpr double kShadowSigma = 0.02;
constexpr double kShadowOpacity = 0.35;
/// Around the output a hand is drawn no further than this fraction of the output, however large it is.
constexpr double kLargestMargin = 0.25;

/// A finger that has hit the surface springs back a little; `q` is 0..1 of that time.
double rebound(double q) { return 0.5 * std::exp(-2 * q) * std::sin(std::numbers::pi * q); }

/// Every pixel that a rectangle touches in the output or at most `around` pixels beside it.
PixelBox pixelsNear(const Rectangle& rect, PixelSize output, int around) {
    const PixelBox moved = touchedPixels({rect.x + around, rect.y + around, rect.width, rect.height},
                                         {output.width + 2 * around, output.height + 2 * around});
    return {moved.x - around, moved.y - around, moved.width, moved.height};
}

Tile cropped(const Tile& tile, const PixelBox& box) {
    Tile part(box);
    for (int y = box.y; y < box.bottom(); ++y) std::copy_n(tile.row(y) + (box.x - tile.box.x), box.width, part.row(y));
    return part;
}

void fade(double opacity, Tile& tile) {
    if (!(opacity < 1)) return;
    const auto share = static_cast<float>(opacity);
    for (Tile::Pixel& pixel : tile.pixels)
        pixel = {pixel.red * share, pixel.green * share, pixel.blue * share, pixel.alpha * share};
}

} // namespace

double tapTapLift(double p) {
    if (p < 0.05) return 1;
    if (p < 0.16) return 1 - smoothstep((p - 0.05) / 0.11);
    if (p < 0.36) return rebound((p - 0.16) / 0.2);
    if (p < 0.46) return smoothstep((p - 0.36) / 0.1);
    if (p < 0.57) return 1 - smoothstep((p - 0.46) / 0.11);
    if (p < 0.77) return rebound((p - 0.57) / 0.2);
    if (p < 0.87) return smoothstep((p - 0.77) / 0.1);
    return 1;
}

std::vector<TapTapHand> tapTapHandsAt(const CompositionInstruction& instruction, const StageGeometry& stage,
                                      EditTime t) {
    std::vector<TapTapHand> hands;
    for (const TapTapKeyframe& key : instruction.tapTapKeyframes) {
        const double opacity = tapTapOpacity(key, t);
        if (!(opacity > kSmallestOpacity)) continue;
        const double size = std::clamp(instruction.tapTapScale * key.size, kSmallestSize, kLargestSize);
        const double height = stage.frameRect.height * size;
        const NormalizedPoint place = stage.outputPoint(key.x, key.y);
        if (!(height > kSmallestHeight) || !std::isfinite(height + place.x + place.y)) continue;

        const double lift = tapTapLift((t - key.startTime) / (key.endTime - key.startTime));
        const double rise = lift * kRise * height;
        const PathPoint back = handMeasures(instruction.tapTapStyle).direction;
        hands.push_back(
            {instruction.tapTapStyle, {place.x + back.x * rise, place.y + back.y * rise}, height, 1 - lift, opacity});
    }
    return hands;
}

Tile drawn(const TapTapHand& hand, PixelSize output) {
    const TileShadow shadow{{0, hand.height * kShadowDrop}, hand.height * kShadowSigma, kShadowOpacity};
    const Rectangle reach = handReach(hand.style);
    const double spare = shadow.reach() + 1;
    const Rectangle place{hand.tip.x + reach.x * hand.height - spare, hand.tip.y + reach.y * hand.height - spare,
                          reach.width * hand.height + 2 * spare, reach.height * hand.height + 2 * spare};
    const PixelBox shown = touchedPixels(place, output);
    if (shown.isEmpty()) return Tile(shown);

    // What lies just outside the output shades its edge.
    const double around = std::min(std::ceil(spare), std::max(output.width, output.height) * kLargestMargin);
    const PixelBox box = pixelsNear(place, output, static_cast<int>(around));
    Canvas canvas(box, Canvas::Curves::Quick);
    drawHand(hand.style, {hand.tip.x, hand.tip.y}, hand.height, hand.bend, canvas);
    const Image image = canvas.image();
    Tile tile = box == shown ? tileOf(image, box) : cropped(tileOf(image, box), shown);
    layShadow(shadow, image, box, tile);
    fade(hand.opacity, tile);
    return tile;
}

} // namespace morvelin
