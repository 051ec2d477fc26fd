// From a project's edit to the instruction that its frames are drawn from. Pure.
#pragma once

#include <memory>
#include <span>

#include "capture/CursorShapeLibrary.h"
#include "core/CursorEvent.h"
#include "core/ProjectVersion.h"
#include "render/CompositionInstruction.h"

namespace morvelin {

enum class FilmStyle {
    OfProject,
    Plain ///< the recording as it fills the frame: no background, padding, corners, shadow or zoom
};

/// What a film is made of; all of it as it is at one moment.
struct FilmIngredients {
    const EditPayload& edit;
    std::span<const CursorEvent> cursorEvents;
    std::shared_ptr<const CursorShapeLibrary> cursorShapes; ///< absent: the pointer is in the recording's picture
    PixelSize videoSize;                                    ///< of the recording
    PixelSize outputSize;
    FilmStyle style = FilmStyle::OfProject;
    std::vector<TimelineCue> captionCues;         ///< empty where captions are off
    std::shared_ptr<const Image> backgroundImage; ///< null: none, or unreadable
    bool hasCamera = false;                       ///< whether a camera's movie can be read
};

[[nodiscard]] std::shared_ptr<const CompositionInstruction> makeInstruction(const FilmIngredients& ingredients);

} // namespace morvelin
