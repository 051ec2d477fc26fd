#include "narration/VersionSound.h"

namespace morvelin {

VersionSound VersionSound::read(const std::filesystem::path& bundleURL, const EditPayload& edit,
                                AudioStack::RecordingSound recording, const Log& log) {
    return {bundleURL, NarrationLibrary::load(bundleURL, log), audioTracksOf(edit), edit.fragments, recording};
}

} // namespace morvelin
