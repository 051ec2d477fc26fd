// Draws the frames of a finished video in the codec's planes, and only the parts of each that differ from the frame
// before. Owned by whoever renders a stretch of film.
#pragma once

#include <memory>
#include <optional>
#include <span>

#include "platform/MovieReader.h"
#include "platform/Picture.h"
#include "render/CompositionInstruction.h"
#include "render/FramePlan.h"

namespace morvelin {

class StageImage;

/// The movies' frames that show at a moment.
struct ShownFrames {
    MovieFrame recording;
    std::optional<MovieFrame> camera; ///< absent without a camera, or when it has no picture then

    [[nodiscard]] FrameNumbers numbers() const { return {recording.number, camera ? camera->number : -1}; }
};

/// A frame that a compositor has drawn.
struct ComposedFrame {
    const Picture& picture;            ///< the compositor's own; the next frame is drawn over it
    std::span<const PixelBox> changed; ///< every pixel outside is as in the frame before; valid until the next frame
};

/// One compositor draws one frame after the other, on any thread, without locks. Compositors of parts of a film run
/// side by side and share the stage image.
class Compositor {
public:
    Compositor(std::shared_ptr<const CompositionInstruction> instruction, Subsampling subsampling);
    /// `stage` is of the same instruction; its subsampling is the output's.
    Compositor(std::shared_ptr<const CompositionInstruction> instruction, std::shared_ptr<const StageImage> stage);
    Compositor(Compositor&&) noexcept;
    Compositor& operator=(Compositor&&) noexcept;
    ~Compositor();

    /// The background and shadow of every frame: made once, shared with other compositors of the film.
    [[nodiscard]] std::shared_ptr<const StageImage> stageImage() const;

    /// Draws a plan of this compositor's instruction. `frames` are those that the plan names; frames with equal numbers
    /// are taken to be equal. The first frame changes everything.
    ComposedFrame compose(const FramePlan& plan, const ShownFrames& frames);

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace morvelin
