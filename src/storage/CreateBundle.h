// The end of a take: its movie, its pointer's track and its first timeline become a project.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "storage/CursorShapeFiles.h"
#include "storage/ProjectBundle.h"

namespace morvelin::ProjectBundle {

/// What a finished recording leaves behind.
struct FinishedTake {
    std::filesystem::path movie;
    std::filesystem::path bundleURL; ///< where the project goes if that is free; empty: beside the movie, with its name
    std::optional<std::filesystem::path> camera;
    std::optional<CameraSettings> cameraSettings{}; ///< how the camera's bubble lies
    std::string name;                               ///< the project's display name
    Date createdAt;                                 ///< when the recording was made
    Seconds duration;                               ///< length of the movie
    std::vector<CursorEvent> cursorEvents;
    std::optional<CursorShapeFiles> cursorShapes; ///< absent where the pointer is in the picture
    RecordingKind kind = RecordingKind::Screen;
};

/// "Recording Nov 21, 2026 at 4:10 AM": the display name of a take.
[[nodiscard]] std::string recordingName(Date startedAt);

/// Makes the project and returns where it is. The movie moves in as the last step that can fail, so whenever this fails it
/// lies where it was, and so does the camera's file. The pointer's track ends where the movie does. A camera file that
/// can't be moved is logged, and the project has no camera.
Result<std::filesystem::path, BundleError> createBundle(FinishedTake take, const Services& services);

} // namespace morvelin::ProjectBundle
