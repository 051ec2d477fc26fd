#include "render/TranscriptSidecar.h"

#include "core/base/Rounding.h"
#include "narration/AudioTimes.h"
#include "narration/VersionSound.h"
#include "render/SidecarFile.h"
#include "speech/CaptionEngines.h"
#include "speech/NarrationCaptions.h"
#include "storage/TranscriptFile.h"

namespace morvelin {

namespace {

using AudioLayout::Times;

/// A word in the video, or nothing where one of its ends is not heard. Both clocks share the word's record.
std::optional<TranscriptWord> inVideo(const TranscriptWord& word, const Times& times) {
    const auto start = times.timelineTime(word.t);
    const auto end = times.timelineTime(word.endT);
    if (!start || !end || *end < *start) return std::nullopt;
    return TranscriptWord{SourceTime(roundedTo3Decimals(*start)), SourceTime(roundedTo3Decimals(*end)), word.text,
                          word.confidence};
}

} // namespace

std::optional<HeardTranscript> heardTranscript(const std::filesystem::path& bundleURL, const EditPayload& edit,
                                               AudioStack::RecordingSound recording, const CaptionMaker& maker,
                                               const Log& log) {
    const auto stored = ProjectBundle::readTranscript(bundleURL);
    const auto sound = VersionSound::read(bundleURL, edit, recording, log);
    const auto layers = sound.layers();
    const auto composed = NarrationCaptions::compose(layers, edit.fragments, stored, maker).transcript;
    const auto& transcript = composed ? composed : stored;
    if (!transcript) return std::nullopt;
    HeardTranscript heard{*transcript, std::nullopt};
    // Words of takes were brought into the recording's time through the fragments, and go back the same way.
    if (isFromRecordingAlone(transcript->engine)) heard.pieces = AudioStack::heardRecording(layers, edit.fragments);
    return heard;
}

FounderTranscriptSidecar makeTranscriptSidecar(const TranscriptSidecarSubject& subject) {
    const FounderSourceTranscript& transcript = subject.heard.transcript;
    const Times times(subject.fragments, subject.heard.pieces);
    std::vector<TranscriptWord> words;
    for (const TranscriptSegment& segment : transcript.segments)
        for (const TranscriptWord& word : segment.words)
            if (auto placed = inVideo(word, times)) words.push_back(std::move(*placed));

    FounderTranscriptSidecar sidecar;
    sidecar.format = "morvelin-transcript";
    sidecar.generator = sidecarGenerator(subject.applicationVersion);
    sidecar.video = {subject.videoFile, Seconds(roundedTo3Decimals(subject.duration))};
    sidecar.language = transcript.language;
    sidecar.engine = transcript.engine;
    sidecar.segments = FounderSourceTranscript::segmentsFrom(std::move(words));
    return sidecar;
}

std::string encode(const FounderTranscriptSidecar& sidecar) { return writeJSON(toJSON(sidecar), JSONStyle::Pretty); }

} // namespace morvelin
