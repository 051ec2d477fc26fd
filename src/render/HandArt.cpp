#include "render/HandArt.h"

#include "render/GloveHand.h"
#include "render/PointerHand.h"

namespace morvelin {

HandMeasures handMeasures(TapTapStyle style) {
    switch (style) {
    case TapTapStyle::Pointer: return {402, {0.57, 0.82}};
    case TapTapStyle::Glove: return {1041, {0, 1}};
    }
    return {1, {0, 1}};
}

Rectangle handReach(TapTapStyle style) {
    switch (style) {
    case TapTapStyle::Pointer: return {-0.08, -0.09, 0.95, 1.04};
    case TapTapStyle::Glove: return {-0.40, -0.09, 0.87, 1.04};
    }
    return {};
}

void drawHand(TapTapStyle style, PathPoint tip, double height, double bend, Canvas& canvas) {
    const auto& [units, direction] = handMeasures(style);
    // The hands are outlined with their finger straight up.
    const double angle = std::atan2(-direction.x, direction.y);
    canvas.placed({tip, height / units, angle}, [&] {
        switch (style) {
        case TapTapStyle::Pointer: drawPointerHand(bend, canvas); break;
        case TapTapStyle::Glove: drawGloveHand(bend, canvas); break;
        }
    });
}

} // namespace morvelin
