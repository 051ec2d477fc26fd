#include "render/ExportError.h"

#include <cerrno>
#include <cstring>

#include <fmt/format.h>

namespace morvelin {

std::string ExportError::description() const {
    switch (kind) {
    case Kind::NoRecording: return "No recording file found";
    case Kind::NoVideoTrack: return "No video track in recording";
    case Kind::ExportSessionFailed: return "Could not create export session";
    case Kind::GifDestinationFailed: return "Could not write the GIF";
    case Kind::IncompleteRead: return "The recording could not be read to the end";
    case Kind::CompositionFailed: return "Could not build edit composition";
    case Kind::RecordingUnreadable: return detail;
    case Kind::TargetFolderMissing:
        return fmt::format("The folder {} doesn’t exist. Create it or choose another place for the export.",
                           path.parent_path().string());
    case Kind::TargetIsFolder: return fmt::format("{} is a folder. Give the export the name of a file.", path.string());
    case Kind::TargetNotWritable: return fmt::format("The export can’t be written to {}: {}", path.string(), detail);
    case Kind::DiskFull:
        return fmt::format("The disk is full, so the export to {} was stopped and its unfinished file removed. Free "
                           "some space and export again.",
                           path.string());
    case Kind::FileTooLarge:
        return fmt::format("The export to {} grew larger than a file may be there and was removed. Export at a lower "
                           "quality, or to another disk.",
                           path.string());
    case Kind::NoEncoder: return fmt::format("No video encoder could be started: {}", detail);
    case Kind::Stopped: return "The export was stopped and its unfinished file removed.";
    }
    return {};
}

ExportError ExportError::from(const MovieReaderError& error) {
    switch (error.kind) {
    case MovieReaderError::Kind::CannotOpen: return {Kind::RecordingUnreadable, {}, error.detail};
    case MovieReaderError::Kind::NoVideoTrack: return {Kind::NoVideoTrack, {}, error.detail};
    case MovieReaderError::Kind::DecodingFailed: return {Kind::IncompleteRead, {}, error.detail};
    }
    return {};
}

ExportError ExportError::from(const FragmentCompositionError& error) {
    switch (error.kind) {
    case FragmentCompositionError::Kind::NoVideoTrack: return {Kind::NoVideoTrack, {}, {}};
    case FragmentCompositionError::Kind::CompositionFailed: return {Kind::CompositionFailed, {}, {}};
    }
    return {};
}

ExportError ExportError::from(const MovieWriterError& error, const std::filesystem::path& target) {
    if (error.kind == MovieWriterError::Kind::NoEncoder) return {Kind::NoEncoder, target, error.detail};
    if (error.code != 0) return fromErrno(error.code, target);
    // A container that looks for its own file again tells no system error.
    std::error_code ignored;
    if (!std::filesystem::is_directory(target.parent_path(), ignored)) return {Kind::TargetFolderMissing, target, {}};
    return {Kind::ExportSessionFailed, target, error.detail};
}

ExportError ExportError::fromErrno(int code, const std::filesystem::path& target) {
    const std::string reason = std::strerror(code);
    switch (code) {
    case ENOSPC:
    case EDQUOT: return {Kind::DiskFull, target, reason};
    case EFBIG: return {Kind::FileTooLarge, target, reason};
    case ENOENT:
    case ENOTDIR: return {Kind::TargetFolderMissing, target, reason};
    case EISDIR: return {Kind::TargetIsFolder, target, reason};
    default: return {Kind::TargetNotWritable, target, reason};
    }
}

} // namespace morvelin
