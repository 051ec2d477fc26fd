// The pointers with smooth outlines, drawn 24 units high.
#include "render/CursorArtwork.h"
#include "render/CursorDrawing.h"

namespace morvelin {

namespace {

using Corners = std::vector<RoundCorner>;

constexpr TileShadow kContactShadow{{0, 0.75}, 0.7, 0.38};
constexpr TileShadow kGlassShadow{{0, 0.75}, 0.7, 0.3};
/// Room for the shadow left of a pointer and above it.
constexpr PathPoint kMargin{0.7, 0.4};

CodableColor shade(double red, double green, double blue, double alpha = 1) {
    return {red / 255, green / 255, blue / 255, alpha};
}

CodableColor white(double alpha) { return {1, 1, 1, alpha}; }

/// The arrow that all know, with a tail.
VectorPath tailedArrow() {
    return VectorPath::rounded(Corners{{{2.6, 2.2}, 0.6},
                                       {{2.6, 17.0}, 0.8},
                                       {{6.1, 13.8}, 0.3},
                                       {{8.5, 19.3}, 0.7},
                                       {{11.1, 18.2}, 0.7},
                                       {{8.8, 12.9}, 0.3},
                                       {{13.6, 12.8}, 0.8}});
}

/// An upright arrow without a tail.
VectorPath bladeArrow() {
    return VectorPath::rounded(Corners{{{3.0, 2.6}, 1.3}, {{3.0, 18.6}, 1.9}, {{7.4, 14.2}, 1.2}, {{14.6, 13.8}, 1.9}});
}

/// Two wings that point up and left.
VectorPath wingedArrow() {
    return VectorPath::rounded(Corners{{{2.6, 2.5}, 1.0}, {{17.9, 8.3}, 1.5}, {{10.2, 10.3}, 1.0}, {{8.1, 18.0}, 1.5}});
}

/// A body with a rim that keeps it apart from whatever lies below.
void drawRimmed(const VectorPath& outline, double roundness, double rim, const Paint& rimPaint, const Paint& body,
                Canvas& canvas) {
    canvas.stroke(outline, 2 * (roundness + rim), rimPaint);
    canvas.fill(outline, rimPaint);
    canvas.stroke(outline, 2 * roundness, body);
    canvas.fill(outline, body);
}

/// Glass: its colour shows through, its edge catches the light.
void drawGlass(const CodableColor& upper, const CodableColor& lower, const CodableColor& edge, Canvas& canvas) {
    const VectorPath outline = bladeArrow();
    canvas.stroke(outline, 1.9, edge);
    canvas.fill(outline, LinearGradient{{3, 2}, {9, 17}, {{0, upper}, {1, lower}}});
    canvas.clipped(outline, [&] {
        // A glow from the edge inwards.
        for (double width = 1.4; width < 5; width += 0.3) canvas.stroke(outline, width, white(0.035));
        const VectorPath sheen =
            VectorPath().moveTo({0, 0}).lineTo({20, 0}).curveTo({10.5, 8}, {4.6, 9.4}, {0, 16.5}).close();
        canvas.fill(sheen, LinearGradient{{3, 2}, {8.5, 11}, {{0, white(0.5)}, {1, white(0.03)}}});
    });
    canvas.stroke(outline, 1.05,
                  LinearGradient{{3, 2}, {12, 19}, {{0, white(1)}, {0.5, white(0.92)}, {1, white(0.7)}}});
}

CursorDrawing smooth(double width, PathPoint hotSpot, const TileShadow& shadow, std::function<void(Canvas&)> draw) {
    const auto drawInside = [draw = std::move(draw)](Canvas& canvas) {
        canvas.placed({kMargin, 1, 0}, [&] { draw(canvas); });
    };
    return {width, kCursorArtworkHeight, 16, hotSpot + kMargin, shadow, drawInside};
}

} // namespace

CursorDrawing inkPointer() {
    return smooth(18, {2.5, 2.1}, kContactShadow, [](Canvas& canvas) {
        const Paint body = LinearGradient{
            {3, 2}, {10, 19}, {{0, shade(66, 66, 80)}, {0.5, shade(28, 28, 36)}, {1, shade(8, 8, 12)}}};
        drawRimmed(tailedArrow(), 0.35, 1.05, white(1), body, canvas);
        canvas.stroke(VectorPath().moveTo({3.15, 4.6}).lineTo({3.15, 14.6}), 0.42,
                      LinearGradient{{3, 4}, {3, 15}, {{0, white(0.55)}, {1, white(0.02)}}});
    });
}

CursorDrawing paperPointer() {
    return smooth(22, {2.4, 2.3}, kContactShadow, [](Canvas& canvas) {
        constexpr PathPoint kTip{2.6, 2.5};
        constexpr PathPoint kRight{18.4, 8.5};
        constexpr PathPoint kNotch{10.4, 10.6};
        constexpr PathPoint kBottom{8.3, 18.6};
        const VectorPath outline = VectorPath::rounded(
            Corners{{kTip, 0.3}, {kRight, 0.3}, {kNotch, 0.2}, {kBottom, 0.3}});
        drawRimmed(outline, 0.2, 0.85, shade(44, 48, 62), white(1), canvas);
        const auto facet = [&](std::initializer_list<PathPoint> corners, const Paint& paint) {
            canvas.fill(VectorPath::polygon(std::vector(corners)), paint);
        };
        // The far wing lies in shade, the fold between the wings in a deeper one.
        facet({kTip, kNotch, kBottom},
              LinearGradient{{9, 8}, {5, 12}, {{0, shade(206, 212, 226)}, {1, shade(236, 239, 246)}}});
        facet({kTip, kRight, kNotch},
              LinearGradient{{8, 8.5}, {12, 4.5}, {{0, shade(255, 255, 255)}, {1, shade(246, 248, 252)}}});
        facet({kTip, kNotch, {8.0, 13.4}}, shade(184, 192, 211));
    });
}

CursorDrawing amberPointer() {
    return smooth(21, {2.5, 2.4}, kContactShadow, [](Canvas& canvas) {
        const VectorPath outline = VectorPath::rounded(
            Corners{{{2.7, 2.6}, 1.0}, {{18.4, 8.6}, 3.6}, {{12.4, 12.6}, 2.2}, {{8.4, 18.6}, 3.6}});
        const Paint body = LinearGradient{
            {3, 3}, {14, 15}, {{0, shade(255, 226, 96)}, {0.45, shade(255, 168, 20)}, {1, shade(232, 92, 0)}}};
        drawRimmed(outline, 0.3, 1.0, white(1), body, canvas);
        canvas.clipped(outline, [&] {
            canvas.fill(VectorPath::circle({11, 11}, 6.4),
                        RadialGradient{{11, 11}, 6.4, {{0, shade(255, 232, 130, 0.85)}, {1, shade(255, 190, 40, 0)}}});
            const VectorPath gloss = VectorPath()
                                         .moveTo({0, 0})
                                         .lineTo({20, 4})
                                         .curveTo({13, 6.8}, {8, 5.6}, {6.6, 7.4})
                                         .curveTo({5.2, 9.2}, {6.6, 13}, {4, 19})
                                         .close();
            canvas.fill(gloss, LinearGradient{{3, 3}, {9, 9}, {{0, white(0.62)}, {1, white(0.10)}}});
        });
        // Air that the resin has kept.
        for (const auto& [place, radius] :
             {std::pair{PathPoint{12.2, 9.6}, 0.55}, {PathPoint{9.7, 12.3}, 0.4}, {PathPoint{13.9, 10.3}, 0.28}})
            canvas.fill(VectorPath::circle(place, radius), white(0.75));
    });
}

CursorDrawing frostedAmberPointer() {
    return smooth(18, {3.1, 3.0}, kGlassShadow, [](Canvas& canvas) {
        drawGlass(shade(255, 196, 54, 0.78), shade(255, 108, 0, 0.80), shade(104, 40, 0, 0.62), canvas);
    });
}

CursorDrawing frostedMonoPointer() {
    return smooth(18, {3.1, 3.0}, kGlassShadow, [](Canvas& canvas) {
        drawGlass(shade(210, 216, 230, 0.60), shade(92, 102, 126, 0.66), shade(22, 26, 38, 0.68), canvas);
    });
}

CursorDrawing duskPointer() {
    return smooth(22, {2.4, 2.3}, kContactShadow, [](Canvas& canvas) {
        const Paint sky = LinearGradient{{2.6, 2.5},
                                         {13.2, 13.2},
                                         {{0, shade(34, 30, 92)},
                                          {0.34, shade(104, 52, 148)},
                                          {0.62, shade(222, 80, 130)},
                                          {1, shade(255, 170, 92)}}};
        drawRimmed(wingedArrow(), 0.45, 1.0, white(1), sky, canvas);
        for (const auto& [place, radius] : {std::pair{PathPoint{5.2, 4.5}, 0.3},
                                            {PathPoint{7.6, 6.1}, 0.2},
                                            {PathPoint{5.9, 7.6}, 0.22},
                                            {PathPoint{9.2, 5.4}, 0.14}})
            canvas.fill(VectorPath::circle(place, radius), white(0.92));
    });
}

} // namespace morvelin
