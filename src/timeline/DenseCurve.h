// The camera's curve, baked to samples: what compositor, preview and frame reader all read for each frame.
#pragma once

#include <span>
#include <vector>

#include "core/CursorEvent.h"
#include "core/Keyframes.h"

namespace morvelin {

class FragmentMap;

/// One sample of the camera: magnification and the view's centre, in capture space.
struct DenseZoomFrame {
    EditTime time;
    double zoom = 1;
    double centerX = 0.5;
    double centerY = 0.5;

    bool operator==(const DenseZoomFrame&) const = default;
};

/// Samples the tracks wherever the pointer moves, at least 0.1 s apart, at 0 and at the end. `positions` are stored and
/// ephemeral keys together. Without fragments, recorded moments are taken for moments of the edit.
[[nodiscard]] std::vector<DenseZoomFrame> denseFrames(std::vector<ZoomKeyframe> zooms,
                                                      std::vector<PositionKeyframe> positions,
                                                      std::span<const CursorEvent> events,
                                                      const FragmentMap& fragments);

/// Reads the curve at any time by monotone cubic interpolation (Fritsch and Butland's weighted harmonic slopes): the
/// camera never overshoots a value between two samples. Outside the curve its first or last sample is given as it
/// stands, its own time included; without samples, no zoom.
[[nodiscard]] DenseZoomFrame sampleDenseFrames(std::span<const DenseZoomFrame> frames, EditTime t);

} // namespace morvelin
