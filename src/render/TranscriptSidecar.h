// The transcript file beside an export: what is said in the video, and when. A public wire format.
#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "core/ProjectVersion.h"
#include "core/Transcript.h"
#include "core/base/JSON.h"
#include "core/base/Log.h"
#include "core/base/Time.h"
#include "narration/AudioStack.h"
#include "speech/CaptionComposer.h"

namespace morvelin {

/// The words that are heard, in the recording's time, and how its sound lies in the edit.
struct HeardTranscript {
    FounderSourceTranscript transcript;
    std::optional<std::vector<AudioLayout::Piece>> pieces; ///< absent where words go with the picture
};

/// What is heard of a version, as the project's files stand; what is stored where nothing of that is known. Nothing for
/// a project without a transcript.
[[nodiscard]] std::optional<HeardTranscript> heardTranscript(const std::filesystem::path& bundleURL,
                                                             const EditPayload& edit,
                                                             AudioStack::RecordingSound recording,
                                                             const CaptionMaker& maker, const Log& log);

/// The whole file. Times are on the exported video's timeline, in thousandths.
struct FounderTranscriptSidecar {
    struct Video {
        std::string file;
        Seconds duration;
    };

    std::string format;
    int version = 1;
    std::string generator;
    Video video;
    std::optional<std::string> language;
    std::string engine;
    std::vector<TranscriptSegment> segments; ///< the records of a stored transcript, here in the video's time
};

/// What a sidecar tells about. All is of the moment the export began.
struct TranscriptSidecarSubject {
    const HeardTranscript& heard;
    std::span<const VideoFragment> fragments;
    std::string videoFile;          ///< last path component
    Seconds duration;               ///< of the finished video
    std::string applicationVersion; ///< empty for a build without one
};

[[nodiscard]] FounderTranscriptSidecar makeTranscriptSidecar(const TranscriptSidecarSubject& subject);

/// The file's text: pretty, keys sorted, slashes plain.
[[nodiscard]] std::string encode(const FounderTranscriptSidecar& sidecar);

template <class Fields>
void describe(Fields& fields, Same<Fields, FounderTranscriptSidecar::Video>& video) {
    fields.required("file", video.file);
    fields.required("duration", video.duration);
}

template <class Fields>
void describe(Fields& fields, Same<Fields, FounderTranscriptSidecar>& sidecar) {
    fields.required("format", sidecar.format);
    fields.required("version", sidecar.version);
    fields.required("generator", sidecar.generator);
    fields.required("video", sidecar.video);
    fields.optional("language", sidecar.language);
    fields.required("engine", sidecar.engine);
    fields.required("segments", sidecar.segments);
}

} // namespace morvelin
