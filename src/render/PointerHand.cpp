#include "render/PointerHand.h"

#include "render/HandDrawing.h"

namespace morvelin {

namespace {

using Outline = std::vector<PathPoint>;

constexpr CodableColor kInk{0.26, 0.13, 0.07, 1};
constexpr double kInkWidth = 7.5;
constexpr CodableColor kSkin{1, 0.8, 0.45, 1};
constexpr CodableColor kSkinShade{0.95, 0.60, 0.25, 1};

/// The knuckle, the middle and the last joint of the index finger.
FingerShape indexFinger() {
    return {{0, 190}, 190, {{4, 44, 0.26, 0.5}, {84, 30, -0.52, 0.25}, {140, 24, -0.40, 0.1}}, 0.10};
}

/// Paler towards the fingertip, deeper towards the wrist; over all of the skin.
Paint warmth() {
    return LinearGradient{
        {-60, -20}, {150, 400}, {{0, {1, 0.97, 0.85, 0.5}}, {0.5, {1, 0.8, 0.45, 0}}, {1, {0.97, 0.52, 0.12, 0.5}}}};
}

Tones skin(PathPoint shift, double fadeStart = 1e9, double fadeEnd = 2e9) {
    return {kSkin, kSkinShade, shift, fadeStart, fadeEnd};
}

/// With the little finger, curled.
HandPart palm() {
    return part(Outline{{-31, 200},
                        {-34, 240},
                        {-30, 290},
                        {-16, 335},
                        {-8, 392},
                        {50, 400},
                        {100, 392},
                        {112, 345},
                        {141, 305},
                        {164, 268},
                        {177, 232},
                        {178, 204},
                        {172, 186},
                        {160, 178},
                        {148, 180},
                        {136, 194},
                        {110, 205},
                        {60, 185},
                        {0, 180}},
                kInkWidth, skin({-11, -4}));
}
HandPart thumb() {
    return part(Outline{{-10, 330},
                        {-38, 296},
                        {-70, 252},
                        {-96, 212},
                        {-105, 187},
                        {-100, 169},
                        {-83, 162},
                        {-66, 174},
                        {-50, 198},
                        {-30, 220},
                        {0, 238},
                        {40, 280},
                        {30, 320}},
                kInkWidth, skin({8, 0}, 260, 330));
}

HandPart index() {
    return part(Outline{{-30, 225},
                        {-31, 190},
                        {-30, 150},
                        {-28, 95},
                        {-26, 45},
                        {-24.5, 14},
                        {-16, -8},
                        {0, -16},
                        {16, -8},
                        {24.5, 14},
                        {26, 45},
                        {28, 95},
                        {30, 150},
                        {31, 190},
                        {30, 225},
                        {0, 236}},
                kInkWidth, skin({-10, -2}, 150, 205));
}

HandPart middle() {
    return part(Outline{{32, 235},
                        {31, 190},
                        {34, 158},
                        {44, 141},
                        {60, 136},
                        {76, 142},
                        {87, 160},
                        {89, 190},
                        {88, 235},
                        {60, 246}},
                kInkWidth, skin({-9, -2}, 200, 240));
}
HandPart ring() {
    return part(Outline{{84, 240},
                        {84, 200},
                        {88, 170},
                        {98, 155},
                        {113, 151},
                        {128, 158},
                        {137, 176},
                        {139, 200},
                        {137, 240},
                        {110, 252}},
                kInkWidth, skin({-9, -2}, 210, 245));
}
HandPart cuff() {
    return part(Outline{{-28, 375},
                        {-27, 360},
                        {-12, 352},
                        {44, 351},
                        {100, 352},
                        {115, 360},
                        {116, 375},
                        {115, 390},
                        {100, 398},
                        {44, 399},
                        {-12, 398},
                        {-27, 390}},
                kInkWidth, {CodableColor{1, 1, 1, 1}, CodableColor{0.80, 0.83, 0.91, 1}, {-14, -6}});
}
HandPart sleeve() {
    return part(Outline{{-20, 390}, {-22, 420}, {-15, 440}, {44, 446}, {103, 440}, {110, 420}, {108, 390}, {44, 384}},
                kInkWidth, {CodableColor{0.25, 0.29, 0.50, 1}, CodableColor{0.16, 0.18, 0.34, 1}, {-16, 0}});
}

/// Where fingers lie beside each other.
void drawFolds(Canvas& canvas) {
    const Outline folds[] = {{{31, 176}, {32, 195}, {33, 218}, {37, 240}},
                             {{87, 178}, {88, 198}, {88, 218}, {86, 240}},
                             {{137, 196}, {137, 212}, {136, 230}, {132, 250}},
                             {{-32, 219}, {-22, 229}, {-10, 240}, {0, 256}}};
    for (const Outline& fold : folds) canvas.fill(inkLine(fold, 6.5), kInk);
}

/// Creases over the middle joint: they smooth out as the finger bends.
void drawCreases(const FingerBend& bend, double amount, Canvas& canvas) {
    CodableColor ink = kInk;
    ink.alpha = 0.6 * (1 - 0.6 * amount);
    for (const double y : {98.0, 111.0}) {
        const Outline crease{{-14, y + 3}, {-5, y - 1}, {5, y - 1}, {14, y + 3}};
        canvas.fill(inkLine(crease, 4.5).mapped(bend), ink);
    }
}

void drawNail(const FingerBend& bend, Canvas& canvas) {
    const Outline outline{{-11.5, 14}, {-9.5, -2}, {0, -8}, {9.5, -2}, {11.5, 14}, {9.5, 26}, {0, 29}, {-9.5, 26}};
    const VectorPath nail = VectorPath::through(outline, VectorPath::Ends::Joined).mapped(bend);
    canvas.fill(nail, CodableColor{1, 0.95, 0.87, 1});
    canvas.stroke(nail, 2.8, CodableColor{0.83, 0.47, 0.18, 0.85});
}

void drawGleam(const FingerBend& bend, Canvas& canvas) {
    const Outline gleam{{-17, 165}, {-17.5, 135}, {-16.5, 90}, {-15.5, 50}};
    canvas.fill(inkLine(gleam, 8).mapped(bend), CodableColor{1, 1, 1, 0.65});
}

} // namespace

void drawPointerHand(double bendAmount, Canvas& canvas) {
    const FingerBend bend(indexFinger(), bendAmount);
    canvas.placed({bend.tip() * -1, 1, 0}, [&] {
        const std::array hand{palm(), thumb(), ring(), middle(), bent(index(), bend)};
        drawParts(std::array{sleeve()}, kInk, canvas);
        drawParts(hand, kInk, canvas);
        canvas.fill(together(hand), warmth());
        drawFolds(canvas);
        drawCreases(bend, bendAmount, canvas);
        drawNail(bend, canvas);
        drawGleam(bend, canvas);
        drawParts(std::array{cuff()}, kInk, canvas);
    });
}

} // namespace morvelin
