// Reads stereo sound a little faster or slower than it came, so finely that nobody hears it. Owned by a sound track.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace morvelin {

/// Band-limited interpolation between samples, for paces close to 1. The pace may change with every call; what comes
/// out has neither steps nor repeated samples.
class PacedResampler {
public:
    PacedResampler();

    /// Takes interleaved samples, left first.
    void push(std::span<const float> samples);
    /// Appends all frames that the input allows to `out`, reading `pace` frames of input for each.
    void pull(double pace, std::vector<float>& out);
    /// The frames that `pull` still holds back because they need what follows: gives them as if silence followed.
    void drain(double pace, std::vector<float>& out);
    /// Forgets all; the next frame pushed is number 0.
    void reset();

    /// Where in the input the next frame of output lies, in frames since the last reset.
    [[nodiscard]] double position() const { return static_cast<double>(m_firstFrame) + m_position; }
    /// Frames pushed since the last reset.
    [[nodiscard]] std::ptrdiff_t pushed() const;

private:
    void forgetUsed();

    std::vector<float> m_input;      ///< frames from `m_firstFrame` on, with silence before number 0
    std::ptrdiff_t m_firstFrame = 0; ///< the number of the first one in `m_input`
    double m_position = 0;           ///< of the next output, in frames of `m_input`
};

} // namespace morvelin
