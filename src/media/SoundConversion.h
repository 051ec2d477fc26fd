// Turns decoded sound of any form into the one form of the program: `kSoundRate`, interleaved stereo. Owned by one
// sound reader.
#pragma once

#include <cstdint>
#include <vector>

#include "media/FFmpegHandles.h"

namespace morvelin {

class SoundConverter {
public:
    /// Appends the frame's sound, from its sample `first` on, to `samples`. What a change of rate holds back comes with
    /// the next frame, or with `drain`. False where the sound is of a kind that can't be converted.
    bool convert(const AVFrame& frame, int first, std::vector<float>& samples);
    /// Appends what is held back. The next frame begins anew.
    void drain(std::vector<float>& samples);
    /// Forgets what is held back.
    void reset() { m_resampler.reset(); }

private:
    bool prepareFor(const AVFrame& frame);
    void append(const std::uint8_t** planes, int count, std::vector<float>& samples);

    ResamplerHandle m_resampler;
    FrameHandle m_form; ///< a frame without samples, of the form that the resampler is made for
};

} // namespace morvelin
