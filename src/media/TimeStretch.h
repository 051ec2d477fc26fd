// Plays sound faster or slower at its own pitch, exact in length. Owned by a mix, for one piece at a time.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace morvelin {

/// Overlaps stretches of 40 ms, each taken from where it continues the wave best, within 10 ms of the source from where
/// the speed wants it. No moment is heard earlier or later than that, however long the piece; the beginning is exact.
class TimeStretch {
public:
    /// Fills interleaved stereo samples, from the sample `first` of the piece on. Asked for ever later moments, which
    /// may overlap.
    using Source = std::function<void(std::int64_t first, std::span<float> samples)>;

    /// `length` is the piece's, in samples at speed 1; beyond it there is silence.
    TimeStretch(Source source, std::int64_t length, double speed);

    /// The next samples, interleaved.
    void read(std::span<float> samples);

private:
    void makeStretch();
    [[nodiscard]] std::int64_t placeFor(std::int64_t ideal, std::int64_t natural) const;
    void hold(std::int64_t first, std::int64_t end);
    [[nodiscard]] const float* at(std::int64_t sample) const;

    Source m_source;
    std::int64_t m_length = 0;
    double m_speed = 1;

    std::int64_t m_heldFrom = 0;
    std::vector<float> m_held;   ///< the source around the current stretch, interleaved
    std::vector<float> m_mono;   ///< the same, coarser, to be compared
    std::int64_t m_stretch = 0;  ///< number of the next one
    std::int64_t m_previous = 0; ///< where in the source the last one was taken from
    std::vector<float> m_made;   ///< the part of it that is ready
    std::size_t m_used = 0;      ///< floats of it that have been read
};

} // namespace morvelin
