// What is known of a project's transcription from its files alone, while none is running.
#pragma once

#include <filesystem>
#include <string>

#include "core/base/JSON.h"

namespace morvelin {

enum class SpeechModel { Missing, Downloaded };

struct TranscriptionStatus {
    std::string status = "idle";
    bool hasTranscript = false; ///< a transcript that can't be read counts as none
    bool modelDownloaded = false;

    bool operator==(const TranscriptionStatus&) const = default;
};

template <class Fields>
void describe(Fields& fields, Same<Fields, TranscriptionStatus>& status) {
    fields.required("status", status.status);
    fields.required("has_transcript", status.hasTranscript);
    fields.required("model_downloaded", status.modelDownloaded);
}

[[nodiscard]] TranscriptionStatus statusOnDisk(const std::filesystem::path& bundleURL, SpeechModel model);

} // namespace morvelin
