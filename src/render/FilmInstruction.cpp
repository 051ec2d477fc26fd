#include "render/FilmInstruction.h"

#include "render/CursorScene.h"
#include "timeline/ClickPings.h"
#include "timeline/DenseCurve.h"
#include "timeline/FragmentMap.h"
#include "timeline/PositionKeys.h"

namespace morvelin {

namespace {

void dress(CompositionInstruction& instruction, const FilmIngredients& film, const FragmentMap& fragments) {
    switch (film.style) {
    case FilmStyle::OfProject:
        instruction.padding = film.edit.padding;
        instruction.cornerRadius = film.edit.cornerRadius;
        instruction.shadowIntensity = film.edit.shadowIntensity;
        instruction.background = film.edit.background;
        instruction.backgroundImage = film.backgroundImage;
        instruction.captionCues = film.captionCues;
        instruction.denseFrames = denseFrames(
            film.edit.zoomKeyframes, cameraPositionKeys(film.edit, fragments.duration()), film.cursorEvents, fragments);
        return;
    case FilmStyle::Plain:
        instruction.padding = 0;
        instruction.cornerRadius = 0;
        instruction.shadowIntensity = 0;
        instruction.background.reset();
        return;
    }
}

void annotate(CompositionInstruction& instruction, const EditPayload& edit) {
    instruction.focusKeyframes = edit.focusKeyframes;
    instruction.tapTapKeyframes = edit.tapTapKeyframes;
    instruction.tapTapStyle = edit.tapTapStyle.value_or(TapTapStyle::Pointer);
    instruction.tapTapScale = edit.tapTapScale.value_or(1);
    instruction.annotationColor = edit.annotationColor;
}

} // namespace

std::shared_ptr<const CompositionInstruction> makeInstruction(const FilmIngredients& film) {
    const FragmentMap fragments(film.edit.fragments);
    auto instruction = std::make_shared<CompositionInstruction>();
    instruction->videoNaturalSize = film.videoSize;
    instruction->outputSize = film.outputSize;
    dress(*instruction, film, fragments);
    instruction->clickPings = clickPings(film.cursorEvents, fragments);
    instruction->maskKeyframes = film.edit.maskKeyframes;
    instruction->clickAnimationsEnabled = film.edit.clickAnimationsEnabled;
    instruction->clickAnimationColor = film.edit.clickAnimationColor;
    annotate(*instruction, film.edit);
    instruction->captionSize = film.edit.captionSize;
    if (film.hasCamera && film.edit.cameraEnabled) instruction->cameraSettings = film.edit.camera;
    if (film.cursorShapes)
        instruction->cursorScene = std::make_shared<const CursorScene>(
            CursorScene::make(film.cursorEvents, film.cursorShapes, film.edit.cursor.value_or(CursorSettings())));
    instruction->fragments = fragments;
    return instruction;
}

} // namespace morvelin
