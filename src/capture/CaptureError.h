// Why a capture could not be started, continued or finished, with the words that a user reads.
#pragma once

#include <string>

namespace morvelin {

struct CaptureError {
    enum class Kind {
        OutputDirectoryCreationFailed,
        AssetWriterSetupFailed,
        AssetWriterFailed,
        AlreadyRecording,
        NotRecording,
        DisplayNotFound,
        WindowNotFound,
        InvalidCropRect,
        StopInProgress,
        /// The screen can't be captured at all; the detail tells what to do.
        ScreenUnavailable,
        /// The sound that was asked for can't be recorded; the detail tells what to do.
        SoundUnavailable,
        /// The screen or the movie ended a running take; the detail tells why.
        Interrupted
    };

    Kind kind = Kind::NotRecording;
    std::string detail;

    [[nodiscard]] std::string description() const;
};

} // namespace morvelin
