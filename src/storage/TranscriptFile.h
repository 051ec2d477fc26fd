// A project's transcript on disk (`transcript.json`).
#pragma once

#include <filesystem>
#include <optional>

#include "core/Transcript.h"
#include "core/base/Result.h"
#include "storage/BundleError.h"

namespace morvelin::ProjectBundle {

/// Nothing where the file is missing or can't be read as a transcript.
[[nodiscard]] std::optional<FounderSourceTranscript> readTranscript(const std::filesystem::path& bundleURL);
/// A failure leaves the earlier file as it was.
Result<void, BundleError> writeTranscript(const FounderSourceTranscript& transcript,
                                          const std::filesystem::path& bundleURL);

} // namespace morvelin::ProjectBundle
