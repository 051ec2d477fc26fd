#include "storage/OpenedProject.h"

#include "narration/AudioTracks.h"

namespace morvelin::ProjectBundle {

Project openedProject(const std::filesystem::path& bundleURL, const Contents& contents, IdSource& ids) {
    const EditPayload& edit = contents.currentVersion().edit;
    Project project;
    project.apply(edit);
    project.id = ids.next();
    project.name = contents.capture.name;
    project.createdAt = contents.capture.createdAt;
    project.originalDuration = contents.capture.originalDuration;
    project.bundleURL = bundleURL;
    project.recordingURL = contents.recordingURL;
    project.cameraURL = contents.cameraURL;
    project.audioTracks = audioTracksOf(edit);
    return project;
}

} // namespace morvelin::ProjectBundle
