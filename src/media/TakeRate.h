// How finely each frame of a take is quantised. Owned by the encoder of one take.
#pragma once

#include <cstdint>

#include "media/RateControl.h"

namespace morvelin {

/// Below this quantiser a screen gains nothing that an eye could see. Without a floor, rate control goes on refining a
/// picture that stands still, and each refinement makes the map of unchanged blocks void.
inline constexpr int kQuantizerFloor = 16;

/// A leaky bucket: bits go in as frames are coded and leave at the take's bit rate. While it is nearly empty, as with
/// most screens it is, frames get the finest quantiser that an eye could tell from the original; the fuller it is, the
/// coarser they are. So the rate is an upper limit over any few seconds, and a screen that stood still for minutes has
/// no credit to waste.
///
/// libx264's own average bit rate needs a look at each whole picture, a quarter of the time of a frame at this preset.
class TakeRate final : public RateControl {
public:
    explicit TakeRate(std::int64_t bitsPerSecond) : m_bitsPerSecond(static_cast<double>(bitsPerSecond)) {}

    [[nodiscard]] int quantizerAt(double time, bool isKeyFrame) override;
    void add(std::int64_t bits) override { m_bits += static_cast<double>(bits); }

private:
    double m_bitsPerSecond;
    double m_bits = 0;
    double m_time = 0;
};

} // namespace morvelin
