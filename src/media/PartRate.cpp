#include "media/PartRate.h"

#include <algorithm>
#include <cmath>

namespace morvelin {

namespace {

constexpr double kRestQuantizer = 20; ///< a finer one gains nothing that an eye could see in a film
constexpr double kCoarsestQuantizer = 46;
constexpr double kStepsToHalf = 6;
constexpr double kStepsPerSecond = 24; ///< of the bit rate that the bucket holds too much
constexpr double kKeyFrameSteps = 10;  ///< by which a key frame is finer, with bits to spare
constexpr double kLeastKeyFrameSteps = 3;

constexpr double kCreditSeconds = 2;   ///< of the bit rate, which a film may have spent early
constexpr double kHorizonSeconds = 16; ///< within which a surplus or a debt is made good
constexpr double kMostFreeSeconds = 8; ///< of a surplus, in one part
constexpr double kLeastFreeSeconds = 0.5;

} // namespace

PartBudget partBudget(double bitsPerSecond, std::span<const PartCost> earlier) {
    double spent = 0;
    double atRest = 0; // bits of the same parts, had they been coded at the finest quantiser
    double seconds = 0;
    for (const PartCost& part : earlier) {
        const auto bits = static_cast<double>(part.bits);
        spent += bits;
        atRest += bits * std::exp2((part.quantizer - kRestQuantizer) / kStepsToHalf);
        seconds += part.length.value;
    }
    const double balance = bitsPerSecond * (seconds + kCreditSeconds) - spent;
    const double allowed = std::max(bitsPerSecond / 4, bitsPerSecond + balance / kHorizonSeconds);
    const double coarser = seconds > 0 && atRest > 0 ? kStepsToHalf * std::log2(atRest / seconds / allowed) : 0;
    return {.quantizer = std::clamp(kRestQuantizer + coarser, kRestQuantizer, kCoarsestQuantizer),
            .bitsPerSecond = bitsPerSecond,
            .freeBits = bitsPerSecond * std::clamp(balance / 2 / bitsPerSecond, kLeastFreeSeconds, kMostFreeSeconds)};
}

int PartRate::quantizerAt(double time, bool isKeyFrame) {
    m_fill = std::max(0.0, m_fill - m_budget.bitsPerSecond * (time - m_time));
    m_time = time;
    const double excess = std::max(0.0, m_fill - m_budget.freeBits) / m_budget.bitsPerSecond;
    const double quantizer = std::min(m_budget.quantizer + kStepsPerSecond * excess, kCoarsestQuantizer);
    if (isKeyFrame) {
        const double finer = kKeyFrameSteps - (quantizer - kRestQuantizer);
        return static_cast<int>(std::lround(quantizer - std::clamp(finer, kLeastKeyFrameSteps, kKeyFrameSteps)));
    }
    m_quantizerSum += quantizer;
    ++m_frames;
    return static_cast<int>(std::lround(quantizer));
}

void PartRate::add(std::int64_t bits) {
    m_fill += static_cast<double>(bits);
    m_bits += bits;
}

PartCost PartRate::cost(Seconds length) const {
    const double mean = m_frames > 0 ? m_quantizerSum / static_cast<double>(m_frames) : m_budget.quantizer;
    return {m_bits, length, mean};
}

} // namespace morvelin
