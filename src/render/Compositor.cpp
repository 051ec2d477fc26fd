#include "render/Compositor.h"

#include <cassert>
#include <optional>
#include <utility>
#include <vector>

#include "media/PictureDifference.h"
#include "render/OverlayLayer.h"
#include "render/PicturePlacement.h"
#include "render/RedrawBoxes.h"
#include "render/StageImage.h"
#include "render/StageLayer.h"
#include "render/VideoLayer.h"

namespace morvelin {

struct Compositor::State {
    State(std::shared_ptr<const CompositionInstruction> wanted, std::shared_ptr<const StageImage> image)
        : instruction(std::move(wanted)),
          picture(image->size(), image->subsampling()),
          video(image->size(), image->subsampling()),
          overlays(image->size(), image->subsampling()),
          camera(image->size(), image->subsampling()),
          stage(std::move(image)) {}

    /// The frame as it will be, and what of it is already there.
    struct Shown {
        FramePlan plan;
        std::shared_ptr<const Picture> picture;
    };

    void findChanges(const FramePlan& plan, const ShownFrames& frames);
    void addPictureChanges(const MovieFrame& frame);
    void addMaskChanges(const FramePlan& plan);
    void draw(const PixelBox& box, const Picture& source);

    std::shared_ptr<const CompositionInstruction> instruction;
    Picture picture;
    VideoLayer video;
    OverlayLayer overlays;
    CameraLayer camera;
    StageLayer stage;
    std::optional<Shown> shown;
    std::vector<PixelBox> changed;
};

Compositor::Compositor(std::shared_ptr<const CompositionInstruction> instruction, Subsampling subsampling) {
    auto image = std::make_shared<const StageImage>(*instruction, subsampling);
    m_state = std::make_unique<State>(std::move(instruction), std::move(image));
}

Compositor::Compositor(std::shared_ptr<const CompositionInstruction> instruction,
                       std::shared_ptr<const StageImage> stage)
    : m_state(std::make_unique<State>(std::move(instruction), std::move(stage))) {}

Compositor::Compositor(Compositor&&) noexcept = default;
Compositor& Compositor::operator=(Compositor&&) noexcept = default;
Compositor::~Compositor() = default;

std::shared_ptr<const StageImage> Compositor::stageImage() const { return m_state->stage.image(); }

ComposedFrame Compositor::compose(const FramePlan& plan, const ShownFrames& frames) {
    assert(frames.recording.picture != nullptr);
    State& state = *m_state;
    state.changed.clear();
    if (!state.shown || state.shown->plan != plan) {
        state.findChanges(plan, frames);
        for (const PixelBox& box : state.changed) state.draw(box, *frames.recording.picture);
        state.shown = State::Shown{plan, frames.recording.picture};
    }
    return {state.picture, state.changed};
}

/// Prepares all layers, and lists what they will draw differently.
void Compositor::State::findChanges(const FramePlan& plan, const ShownFrames& frames) {
    const MovieFrame& frame = frames.recording;
    const PixelBox everything{0, 0, picture.size().width, picture.size().height};
    const bool isNewPicture = !shown || shown->plan.sourceFrame != plan.sourceFrame;
    const bool isNewView = !shown || shown->plan.stage != plan.stage || shown->picture->size() != frame.picture->size();
    overlays.prepare(plan, changed);
    camera.prepare(plan.camera, frames.camera ? frames.camera->picture : nullptr, changed);
    if (!isNewView && plan.stage.showsPicture) {
        // Asked while the layer still holds the masks of the frame before: both frames' masks feel the change.
        if (isNewPicture) addPictureChanges(frame);
        addMaskChanges(plan);
    }
    stage.prepare(plan.stage);
    video.prepare(plan, *frame.picture);
    if (isNewPicture) video.forgetPicture();
    if (isNewView) changed = {everything};
    joinRedrawBoxes(picture.size(), changed);
}

void Compositor::State::addPictureChanges(const MovieFrame& frame) {
    for (const PixelBox& box : differingBoxes(*shown->picture, *frame.picture)) video.addReach(box, changed);
}

/// Masks that come, go or change; where the order of masks changes, all of them count.
void Compositor::State::addMaskChanges(const FramePlan& plan) {
    const auto& before = shown->plan.masks;
    if (before == plan.masks) return;
    for (const auto* masks : {&before, &plan.masks})
        for (const MaskPlacement& mask : *masks) {
            PixelBox box = touchedPixels(mask.rect, picture.size());
            // Chroma right of an edge stands for the edge's last column too.
            box.width += 2;
            changed.push_back(box);
        }
}

void Compositor::State::draw(const PixelBox& box, const Picture& source) {
    stage.draw(box, picture);
    video.draw(source, box, picture);
    overlays.draw(box, picture);
    camera.draw(box, picture);
    overlays.drawCaption(box, picture);
}

} // namespace morvelin
