// The files of a project's folder: their names, and the one way in which a record is read from one and written to one.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "core/base/Files.h"
#include "core/base/Identity.h"
#include "core/base/JSON.h"
#include "core/base/Result.h"
#include "storage/BundleError.h"

namespace morvelin::ProjectBundle {

inline constexpr const char* kExtension = ".morvelin";
inline constexpr const char* kRecordingFile = "recording.mov";
inline constexpr const char* kCameraFile = "camera.mov";
inline constexpr const char* kCaptureFile = "capture.json";
inline constexpr const char* kCursorEventsFile = "cursorEvents.json";
inline constexpr const char* kCursorShapesFile = "cursorShapes.json";
inline constexpr const char* kTranscriptFile = "transcript.json";
inline constexpr const char* kCursorsFolder = "cursors";
inline constexpr const char* kVersionsFolder = "versions";
inline constexpr const char* kLegacyMetadataFile = "metadata.json";
inline constexpr const char* kConvertedMetadataFile = "legacy-metadata.json";

/// Whether a folder of that name may be a project, in whatever case its extension is written.
[[nodiscard]] bool hasBundleExtension(std::string_view name);

/// `versions/<UUID>.json`
[[nodiscard]] std::filesystem::path versionFile(const std::filesystem::path& bundleURL, const UUID& id);

/// Whether anything lies at the path, be it unreadable.
[[nodiscard]] bool isPresent(const std::filesystem::path& path);

/// The JSON text of a value for `file`; fails with `NotFinite` rather than giving a text that no one could read back.
Result<std::string, BundleError> encode(const JSONValue& value, const std::filesystem::path& file);

template <class Record>
Result<Record, BundleError> readRecord(const std::filesystem::path& file) {
    const auto text = readFile(file);
    if (!text) return failure(BundleError(text.error()));
    auto record = decode<Record>(*text);
    if (!record) return failure(BundleError(BundleError::Undecodable{file, std::move(record).error()}));
    return std::move(*record);
}

template <class Record>
Result<void, BundleError> writeRecord(const Record& record, const std::filesystem::path& file) {
    const auto text = encode(toJSON(record), file);
    if (!text) return failure(text.error());
    if (auto written = writeFileAtomically(file, *text); !written) return passOn(std::move(written));
    return {};
}

} // namespace morvelin::ProjectBundle
