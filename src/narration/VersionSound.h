// All that a version's sound follows from, as it lies on disk: its tracks, the takes, and the recording's own sound.
#pragma once

#include <filesystem>
#include <vector>

#include "core/ProjectVersion.h"
#include "core/base/Log.h"
#include "narration/AudioStack.h"
#include "narration/AudioTracks.h"
#include "narration/NarrationLibrary.h"

namespace morvelin {

/// A value; read anew where it is needed.
struct VersionSound {
    std::filesystem::path bundleURL;
    NarrationLibrary library;
    AudioTrackList tracks; ///< one of them is the recording's own sound
    std::vector<VideoFragment> fragments;
    AudioStack::RecordingSound recording = AudioStack::RecordingSound::Audible;

    [[nodiscard]] static VersionSound read(const std::filesystem::path& bundleURL, const EditPayload& edit,
                                           AudioStack::RecordingSound recording, const Log& log);

    /// Refers to this value.
    [[nodiscard]] AudioStack::Edit edit() const { return {fragments, library.takes, bundleURL, recording}; }
    [[nodiscard]] std::vector<AudioStack::Layer> layers() const { return AudioStack::layers(tracks, edit()); }
};

} // namespace morvelin
