#include "media/TakeRate.h"

#include <algorithm>
#include <cmath>

namespace morvelin {

namespace {

constexpr double kFreeSeconds = 0.5;   // of the bit rate, before a frame gets coarser: a key frame of a busy screen
constexpr double kStepsPerSecond = 24; // 6 steps halve the size of a frame
constexpr int kCoarsestQuantizer = 51;

} // namespace

int TakeRate::quantizerAt(double time, bool /*isKeyFrame*/) {
    m_bits = std::max(0.0, m_bits - m_bitsPerSecond * (time - m_time));
    m_time = time;
    const double excess = std::max(0.0, m_bits / m_bitsPerSecond - kFreeSeconds);
    return std::min(kQuantizerFloor + static_cast<int>(std::lround(kStepsPerSecond * excess)), kCoarsestQuantizer);
}

} // namespace morvelin
