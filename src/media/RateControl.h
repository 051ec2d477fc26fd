// How finely each frame of a movie is quantised. Owned by one encoder.
#pragma once

#include <cstdint>

namespace morvelin {

/// Quantisers are H.264's, 0 to 51; 6 steps halve the size of a frame, about.
class RateControl {
public:
    virtual ~RateControl() = default;

    /// The quantiser for the frame at `time`, in seconds; times grow.
    [[nodiscard]] virtual int quantizerAt(double time, bool isKeyFrame) = 0;
    /// Tells how large that frame has become.
    virtual void add(std::int64_t bits) = 0;
};

} // namespace morvelin
