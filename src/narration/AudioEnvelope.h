// The loudness of a stretch of sound over time, as a lane of the timeline draws it.
#pragma once

#include <span>
#include <vector>

namespace morvelin {

/// One peak for each `step` seconds of a file, the first one's stretch beginning at `start`.
struct AudioEnvelope {
    double start = 0;         ///< seconds into the file
    double step = 0;          ///< seconds per peak
    std::vector<float> peaks; ///< the largest magnitude of each stretch, 0..1

    bool operator==(const AudioEnvelope&) const = default;
};

/// Decoded sound: `channels` samples for each moment, one after the other, full scale at 1.
struct SoundSamples {
    std::span<const float> samples;
    int channels = 1;
    double rate = 48000; ///< moments a second
};

/// The envelope of sound that begins `start` seconds into its file; the louder channel counts. A rest shorter than
/// `step` has a peak of its own, and a step is one moment at least. No peaks where `step`, `rate` or `channels` isn't above 0.
[[nodiscard]] AudioEnvelope audioEnvelope(const SoundSamples& sound, double start, double step);

} // namespace morvelin
