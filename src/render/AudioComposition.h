// The edit's sound: which moments of which file are heard when in the finished video. Pure values; made beside the
// picture track, and mixed into samples by an export or a preview.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <variant>
#include <vector>

#include "narration/AudioStack.h"
#include "platform/SoundReader.h"
#include "render/EditComposition.h"

namespace morvelin {

namespace FragmentCompositionBuilder {

/// What of a version's files is to be heard.
struct AudioMix {
    using Piece = AudioLayout::Piece;
    using Take = AudioStack::Mix::Take;

    struct Clipped {
        std::vector<Piece> pieces; ///< as the stack of tracks has cut and moved the recording's sound

        bool operator==(const Clipped&) const = default;
    };
    /// The sound goes with its picture.
    struct LaidOut {
        bool operator==(const LaidOut&) const = default;
    };
    struct Muted {
        bool operator==(const Muted&) const = default;
    };
    using Recording = std::variant<Clipped, LaidOut, Muted>;

    Recording recording = Muted{};
    std::vector<Take> takes;

    bool operator==(const AudioMix&) const = default;
};

/// `layers` are those of the ticked tracks, over these fragments.
[[nodiscard]] AudioMix audioMix(std::span<const AudioStack::Layer> layers, std::span<const VideoFragment> fragments);

} // namespace FragmentCompositionBuilder

/// Gives the span of a file's sound; nothing where the file has none or can't be read.
using AudioSpanOf = std::function<std::optional<SoundSpan>(const std::filesystem::path& file)>;

/// One file's sound on the edit timeline.
struct AudioTrack {
    using Segment = EditComposition::Segment;

    std::filesystem::path url;
    std::vector<Segment> segments; ///< by time; none reaches into the next, and between them is silence

    bool operator==(const AudioTrack&) const = default;
};

namespace FragmentCompositionBuilder {

/// Pieces in their order, limited to the sound that there is. One that starts before the end of those laid out, or
/// hardly after it, starts at that end; what would be as good as nothing is left out.
[[nodiscard]] std::vector<AudioTrack::Segment> layOut(std::span<const AudioLayout::Piece> pieces, SoundSpan sound);

/// One track for the recording, if it is heard, and one for each take. Takes that can't be read are left out.
[[nodiscard]] std::vector<AudioTrack> buildAudio(const AudioMix& mix, const EditComposition& picture,
                                                 const std::filesystem::path& recording, const AudioSpanOf& spanOf);

} // namespace FragmentCompositionBuilder

} // namespace morvelin
