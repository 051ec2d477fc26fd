// Why an export gave no file, in the words that a user reads.
#pragma once

#include <filesystem>
#include <string>

#include "platform/MovieReader.h"
#include "platform/MovieWriter.h"
#include "render/EditComposition.h"

namespace morvelin {

struct ExportError {
    enum class Kind {
        NoRecording,
        NoVideoTrack,
        ExportSessionFailed,
        GifDestinationFailed,
        IncompleteRead,
        CompositionFailed,
        RecordingUnreadable, ///< the file is there but is no movie
        TargetFolderMissing,
        TargetIsFolder,
        TargetNotWritable,
        DiskFull,
        FileTooLarge,
        NoEncoder,
        Stopped ///< on request
    };

    Kind kind = Kind::ExportSessionFailed;
    std::filesystem::path path; ///< the target, absolute, where the sentence names it
    std::string detail;         ///< the cause as a whole sentence, for the log and where the sentence quotes it

    [[nodiscard]] std::string description() const;

    [[nodiscard]] static ExportError from(const MovieReaderError& error);
    [[nodiscard]] static ExportError from(const FragmentCompositionError& error);
    [[nodiscard]] static ExportError from(const MovieWriterError& error, const std::filesystem::path& target);
    /// From a failed file operation on the target's folder; `code` is an errno.
    [[nodiscard]] static ExportError fromErrno(int code, const std::filesystem::path& target);
};

} // namespace morvelin
