// What both hands are drawn with: parts in ink and two tones, and lines that swell and thin out. Used by the hands' art.
#pragma once

#include <span>
#include <vector>

#include "render/Canvas.h"
#include "render/FingerBend.h"

namespace morvelin {

/// A part's two tones. Light comes from one side: the shade lies between the part's outline and the same outline moved
/// by `shift`, where that lies inside. From `fadeStart` down to `fadeEnd` the shade narrows to nothing, so that the part
/// runs into the one below it.
struct Tones {
    Paint light;
    Paint shade;
    PathPoint shift;
    double fadeStart = 1e9;
    double fadeEnd = 2e9;
};

/// A closed shape of a hand, with the part of it that lies in shade and the ink around it.
struct HandPart {
    VectorPath inked; ///< the shape with its ink
    VectorPath outline;
    VectorPath shaded;
    Paint light;
    Paint shade;
};

/// A part with a smooth outline through points that lie densely where it bends, and ink of an even width around it.
[[nodiscard]] HandPart part(std::span<const PathPoint> corners, double inkWidth, const Tones& tones);

/// The part of a finger, bent.
[[nodiscard]] HandPart bent(const HandPart& straight, const FingerBend& bend);

/// The outlines of all parts, as one shape to fill.
[[nodiscard]] VectorPath together(std::span<const HandPart> parts);

/// One ink line around all parts together, then the parts, the last on top.
void drawParts(std::span<const HandPart> parts, const Paint& ink, Canvas& canvas);

/// An ink line through points: thin at its ends and `width` wide where it is widest.
[[nodiscard]] VectorPath inkLine(std::span<const PathPoint> points, double width);

} // namespace morvelin
