// Everything that the frames of one finished video need, so that any frame can be drawn from it and a time alone.
// Immutable; shared by an export's or a preview's compositors.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "core/CursorEvent.h"
#include "core/Keyframes.h"
#include "core/Style.h"
#include "platform/Picture.h"
#include "timeline/DenseCurve.h"
#include "timeline/FragmentMap.h"

namespace morvelin {

class CursorScene;

struct CompositionInstruction {
    PixelSize videoNaturalSize; ///< of the recording, as shown
    PixelSize outputSize;
    double padding = 0.05;      ///< fraction of the smaller output side
    double cornerRadius = 0.01; ///< fraction of the frame's smaller side
    double shadowIntensity = 0.5;
    std::optional<Background> background; ///< absent: black
    std::vector<DenseZoomFrame> denseFrames;
    std::vector<ClickPing> clickPings;
    std::vector<MaskKeyframe> maskKeyframes;
    bool clickAnimationsEnabled = true;
    std::optional<CodableColor> clickAnimationColor; ///< in place of each button's own colour
    std::shared_ptr<const CursorScene> cursorScene;  ///< absent: the pointer is in the recording, or hidden
    FragmentMap fragments;
};

} // namespace morvelin
