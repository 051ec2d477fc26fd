// One sound track of a take: a device's sound, without the take's pauses. Lives on the capture thread; pure.
#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "capture/SteadySound.h"

namespace morvelin {

/// The track's sample 0 is what was heard with the movie's first frame. Where a pause is cut out, and at the track's
/// ends, the sound fades on each side.
class SoundTrack {
public:
    explicit SoundTrack(HostTime firstFrameTime) : m_sound(firstFrameTime) {}

    void add(const SoundChunk& chunk) { m_sound.add(chunk); }
    /// For want of chunks: silence up to that moment.
    void fillTo(HostTime time) { m_sound.fillTo(m_sound.frameAt(time)); }

    /// The same moments as those of the picture's pauses. A second pause or resume in a row does nothing.
    void pause(HostTime time);
    void resume(HostTime time);

    /// Appends the track's next samples, up to that moment as far as they are there, to `out`. Pauses that begin before
    /// that moment must have been told.
    void takeTo(HostTime time, std::vector<float>& out);
    [[nodiscard]] bool hasAllTo(HostTime time) const { return m_sound.complete() >= m_sound.frameAt(time); }
    /// Samples of each channel that were taken from the track, which is where its next one lies in the movie.
    [[nodiscard]] std::int64_t length() const { return m_length; }
    [[nodiscard]] double drift() const { return m_sound.drift(); }

private:
    static constexpr std::int64_t kOpenEnd = std::numeric_limits<std::int64_t>::max();

    /// Frames that the movie has; `end` isn't one of them.
    struct Span {
        std::int64_t start = 0;
        std::int64_t end = kOpenEnd;
    };

    void keep(const Span& span, std::int64_t first, std::vector<float>& out);

    SteadySound m_sound;
    std::vector<Span> m_spans{Span{}}; ///< in order; those that are over are gone
    std::int64_t m_surplus = 0;        ///< frames that were taken before the pause was told that they lie in
    std::int64_t m_length = 0;
    std::vector<float> m_taken; ///< kept for its memory
};

} // namespace morvelin
