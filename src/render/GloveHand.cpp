#include "render/GloveHand.h"

#include "render/AccentColor.h"
#include "render/HandDrawing.h"

namespace morvelin {

namespace {

using Outline = std::vector<PathPoint>;

constexpr CodableColor kInk{0.11, 0.10, 0.17, 1};
constexpr double kInkWidth = 23;

FingerShape indexFinger() {
    return {{0, 430}, 430, {{10, 100, 0.24, 0.42}, {180, 90, -0.44, 0.25}, {310, 80, -0.34, 0.1}}, 0.12};
}

Tones cloth(PathPoint shift, double fadeStart = 1e9, double fadeEnd = 2e9) {
    return {CodableColor{1, 1, 1, 1}, CodableColor{0.78, 0.80, 0.90, 1}, shift, fadeStart, fadeEnd};
}

/// With the little finger, curled.
HandPart palm() {
    return part(Outline{{-90, 440},
                        {-112, 540},
                        {-118, 640},
                        {-92, 740},
                        {-60, 830},
                        {100, 860},
                        {280, 830},
                        {345, 740},
                        {392, 640},
                        {418, 545},
                        {420, 460},
                        {396, 398},
                        {348, 370},
                        {300, 376},
                        {264, 412},
                        {240, 470},
                        {150, 440},
                        {0, 420}},
                kInkWidth, cloth({-36, -10}));
}
HandPart thumb() {
    return part(Outline{{-50, 790},
                        {-150, 730},
                        {-245, 640},
                        {-330, 548},
                        {-375, 470},
                        {-366, 400},
                        {-300, 366},
                        {-232, 398},
                        {-176, 468},
                        {-100, 530},
                        {0, 590},
                        {100, 690},
                        {80, 780}},
                kInkWidth, cloth({30, -10}, 600, 780));
}
HandPart index() {
    return part(Outline{{-94, 500},
                        {-94, 430},
                        {-86, 330},
                        {-88, 230},
                        {-99, 130},
                        {-96, 50},
                        {-68, -12},
                        {0, -38},
                        {68, -12},
                        {96, 50},
                        {99, 130},
                        {88, 230},
                        {86, 330},
                        {94, 430},
                        {94, 500},
                        {0, 540}},
                kInkWidth, cloth({-34, -8}, 360, 480));
}
HandPart middle() {
    return part(Outline{{92, 540},
                        {88, 450},
                        {94, 372},
                        {124, 322},
                        {178, 302},
                        {232, 322},
                        {264, 372},
                        {268, 450},
                        {256, 540},
                        {170, 590}},
                kInkWidth, cloth({-32, -6}, 440, 550));
}
HandPart cuff() {
    return part(Outline{{-112, 859},
                        {-140, 819},
                        {-118, 777},
                        {-40, 763},
                        {110, 769},
                        {260, 763},
                        {338, 777},
                        {360, 819},
                        {332, 859},
                        {344, 902},
                        {312, 944},
                        {230, 953},
                        {110, 957},
                        {-10, 953},
                        {-92, 944},
                        {-124, 902}},
                kInkWidth, cloth({-40, -18}));
}

void drawFolds(Canvas& canvas) {
    const Outline folds[] = {{{92, 420}, {93, 465}, {96, 515}, {110, 570}},
                             {{260, 450}, {262, 495}, {260, 545}, {248, 600}},
                             {{-106, 524}, {-62, 548}, {-20, 584}, {6, 640}}};
    for (const Outline& fold : folds) canvas.fill(inkLine(fold, 25), kInk);
    const Outline darts[] = {{{26, 632}, {18, 666}, {14, 706}, {16, 744}},
                             {{126, 632}, {126, 668}, {126, 708}, {124, 748}},
                             {{222, 632}, {230, 666}, {232, 704}, {226, 744}}};
    for (const Outline& dart : darts) canvas.fill(inkLine(dart, 30), kInk);
}

/// A band around the cuff's waist.
void drawBand(Canvas& canvas) {
    const Outline upper{{-111, 846}, {-20, 854}, {110, 858}, {240, 854}, {331, 846}};
    Outline lower;
    for (auto point = upper.rbegin(); point != upper.rend(); ++point) lower.push_back(*point + PathPoint{0, 32});
    canvas.fill(VectorPath::through(upper, VectorPath::Ends::Open)
                    .join(VectorPath::through(lower, VectorPath::Ends::Open))
                    .close(),
                kAccentColor);
}

} // namespace

void drawGloveHand(double bendAmount, Canvas& canvas) {
    const FingerBend bend(indexFinger(), bendAmount);
    canvas.placed({bend.tip() * -1, 1, 0}, [&] {
        drawParts(std::array{palm(), thumb(), middle(), bent(index(), bend)}, kInk, canvas);
        drawFolds(canvas);
        drawParts(std::array{cuff()}, kInk, canvas);
        drawBand(canvas);
    });
}

} // namespace morvelin
