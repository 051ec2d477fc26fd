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
    /// The film's length as it is written: whole frames.
    [[nodiscard]] Seconds length() const { return frameTime(frameCount()).sinceZero(); }
};

/// A run of a film's frames, from `first` up to but not including `end`. Parts can be rendered side by side, each with
/// a reader, a compositor and an encoder of its own.
struct FilmPart {
    std::int64_t first = 0;
    std::int64_t end = 0;
};

} // namespace morvelin
