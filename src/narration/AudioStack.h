// What of a version's tracks is heard: where tracks overlap, the top one plays. Lists are in stack order, top first.
#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <vector>

#include "narration/AudioLayout.h"
#include "narration/NarrationLibrary.h"

namespace morvelin::AudioStack {

using AudioLayout::EditRange;
using AudioLayout::Piece;

/// A ticked track, laid out on the timeline.
struct Layer {
    UUID trackID;
    std::optional<NarrationTake> take;        ///< absent for the recording
    std::optional<std::filesystem::path> url; ///< the take's audio
    std::vector<Piece> pieces;

    bool operator==(const Layer&) const = default;
};

/// Whether the recording has sound of its own.
enum class RecordingSound { Audible, Silent };

/// What the layers of a version depend on, besides its tracks. The values must outlive the call.
struct Edit {
    std::span<const VideoFragment> fragments;
    std::span<const NarrationTake> takes; ///< those of the library whose audio is there
    std::filesystem::path bundle;
    RecordingSound recording = RecordingSound::Audible;
};

/// The layers of the ticked tracks. A take that was removed, or whose file has gone, has none. Asks the disk whether
/// the files are there.
[[nodiscard]] std::vector<Layer> layers(std::span<const AudioTrackRef> tracks, const Edit& edit);

/// Layer for layer, what remains of its pieces under all layers above it.
[[nodiscard]] std::vector<std::vector<Piece>> audible(std::span<const Layer> layers);

/// The spans that the layers above the one at `index` lie over, by time, none touching another.
[[nodiscard]] std::vector<EditRange> covered(std::span<const Layer> layers, std::size_t index);

/// What a player needs.
struct Mix {
    struct Take {
        std::filesystem::path url;
        std::vector<Piece> pieces;

        bool operator==(const Take&) const = default;
    };

    std::optional<std::vector<Piece>> recording; ///< absent where the recording is not heard
    std::vector<Take> takes;

    bool operator==(const Mix&) const = default;
};
[[nodiscard]] Mix mix(std::span<const Layer> layers);

/// The pieces through which captions of the recording's words alone are heard: absent while the sound follows its
/// picture or the recording has no layer.
[[nodiscard]] std::optional<std::vector<Piece>> heardRecording(std::span<const Layer> layers,
                                                               std::span<const VideoFragment> fragments);

} // namespace morvelin::AudioStack
