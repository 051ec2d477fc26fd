#include "storage/TranscriptFile.h"

#include "storage/BundleFiles.h"

namespace morvelin::ProjectBundle {

std::optional<FounderSourceTranscript> readTranscript(const std::filesystem::path& bundleURL) {
    auto transcript = readRecord<FounderSourceTranscript>(bundleURL / kTranscriptFile);
    return transcript ? std::optional(std::move(*transcript)) : std::nullopt;
}

Result<void, BundleError> writeTranscript(const FounderSourceTranscript& transcript,
                                          const std::filesystem::path& bundleURL) {
    return writeRecord(transcript, bundleURL / kTranscriptFile);
}

} // namespace morvelin::ProjectBundle
