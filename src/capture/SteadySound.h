// A device's sound laid against the machine's clock, without holes. Owned by a sound track; pure.
#pragma once

#include <cstdint>
#include <vector>

#include "media/PacedResampler.h"
#include "platform/AudioInput.h"

namespace morvelin {

/// Sound that begins, ends or is cut fades over so many frames, 2 ms, so that nothing clicks.
inline constexpr std::int64_t kSoundFade = kSoundRate / 500;

/// Numbers frames of sound from a moment on, `kSoundRate` of them a second by the machine's clock, and fills them from
/// chunks whose times are off by some milliseconds and whose device's clock runs a little fast or slow.
///
/// Small errors are taken out by reading the device a little faster or slower, within 0.3 %, and ever more slowly the
/// smaller they are: nobody hears it. A chunk far from where it should be starts anew in its place: what is missing
/// becomes silence, what is there twice is left out, and the sound fades at both ends.
class SteadySound {
public:
    /// Frame 0 is what was heard at `zero`.
    explicit SteadySound(HostTime zero) : m_zero(zero) {}

    void add(const SoundChunk& chunk);
    /// Silence up to `frame`, for want of chunks; the next chunk starts anew.
    void fillTo(std::int64_t frame);

    /// Frames that are complete: up to this number.
    [[nodiscard]] std::int64_t complete() const;
    /// The number of the first frame that has not been taken.
    [[nodiscard]] std::int64_t taken() const { return m_taken; }
    /// Moves the frames up to `frame`, at most `complete()`, to the end of `out`, interleaved.
    void takeTo(std::int64_t frame, std::vector<float>& out);

    [[nodiscard]] std::int64_t frameAt(HostTime time) const { return soundSamples(time - m_zero); }
    /// By how much the device's clock runs fast, as far as is known: 1e-4 are 100 millionths.
    [[nodiscard]] double drift() const { return m_drift; }

private:
    [[nodiscard]] std::int64_t made() const;
    void begin(const SoundChunk& chunk);
    void breakOff();
    void follow(const SoundChunk& chunk);
    void appendSilence(std::int64_t frames);
    template <class Gain>
    void scale(std::int64_t from, std::int64_t to, const Gain& gain);
    [[nodiscard]] double pace() const;

    HostTime m_zero;
    std::int64_t m_taken = 0;
    std::vector<float> m_frames; ///< from `m_taken` on

    // Of the sound that runs since the last beginning.
    bool m_isRunning = false;
    std::int64_t m_begun = 0;  ///< the frame it began with
    std::int64_t m_toSkip = 0; ///< frames of the device that lie before that one
    std::int64_t m_heard = 0;  ///< frames of the device that came since
    PacedResampler m_resampler;
    double m_error = 0; ///< seconds by which sound lies too early, smoothed
    double m_drift = 0;
};

} // namespace morvelin
