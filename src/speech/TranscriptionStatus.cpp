#include "speech/TranscriptionStatus.h"

#include "storage/TranscriptFile.h"

namespace morvelin {

TranscriptionStatus statusOnDisk(const std::filesystem::path& bundleURL, SpeechModel model) {
    return {"idle", ProjectBundle::readTranscript(bundleURL).has_value(), model == SpeechModel::Downloaded};
}

} // namespace morvelin
