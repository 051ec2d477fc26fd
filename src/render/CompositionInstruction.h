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
#include "speech/TimelineCues.h"
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
    /// The background's picture, sRGB; null when it has none or the file can't be read.
    std::shared_ptr<const Image> backgroundImage;
    std::vector<DenseZoomFrame> denseFrames;
    std::vector<ClickPing> clickPings;
    std::vector<MaskKeyframe> maskKeyframes;
    std::vector<FocusKeyframe> focusKeyframes;
    std::vector<TapTapKeyframe> tapTapKeyframes;
    TapTapStyle tapTapStyle = TapTapStyle::Pointer;
    double tapTapScale = 1;
    bool clickAnimationsEnabled = true;
    std::optional<CodableColor> clickAnimationColor; ///< in place of each button's own colour
    std::optional<CodableColor> annotationColor;     ///< of ovals without a colour of their own
    std::vector<TimelineCue> captionCues;            ///< empty where captions are off
    double captionSize = 1;
    std::optional<CameraSettings> cameraSettings;   ///< absent: no bubble
    std::shared_ptr<const CursorScene> cursorScene; ///< absent: the pointer is in the recording, or hidden
    FragmentMap fragments;
};

} // namespace morvelin
