// A finished video before it is rendered: which frames it has and what each of them shows. Made once per export.
#pragma once

#include <cstdint>
#include <memory>

#include "core/base/Time.h"
#include "render/CompositionInstruction.h"
#include "render/EditComposition.h"

namespace morvelin {

struct Film {
    EditComposition composition;
    std::shared_ptr<const CompositionInstruction> instruction;
    double frameRate = 60;

    /// At least 1 for any length above 0. The last frame may reach past the composition's end by a part of its own.
    [[nodiscard]] std::int64_t frameCount() const;
    /// When a frame starts to show.
    [[nodiscard]] EditTime frameTime(std::int64_t frame) const;
    /// The frame that shows at `t`; outside the film its first or last.
    [[nodiscard]] std::int64_t frameAt(EditTime t) const;
    /// The film's length as it is written: whole frames.
    [[nodiscard]] Seconds length() const { return frameTime(frameCount()).sinceZero(); }

    /// Whether a camera's bubble is wanted.
    [[nodiscard]] bool showsCamera() const { return instruction->cameraSettings.has_value(); }
    /// The moment to ask the camera's movie for at `t`: its own clock starts `startOffset` after the recording's. May
    /// lie outside of what it holds, where its first and last frames stand still. For a film that shows the camera.
    [[nodiscard]] SourceTime cameraTime(EditTime t) const;
};

/// A run of a film's frames, from `first` up to but not including `end`. Parts can be rendered side by side, each with
/// a reader, a compositor and an encoder of its own.
struct FilmPart {
    std::int64_t first = 0;
    std::int64_t end = 0;
};

} // namespace morvelin
