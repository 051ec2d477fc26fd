// How finely the frames of an export are quantised: within a part, and from part to part. Pure.
#pragma once

#include <cstdint>
#include <span>

#include "core/base/Time.h"
#include "media/RateControl.h"

namespace morvelin {

/// What a part of a film came to.
struct PartCost {
    std::int64_t bits = 0;
    Seconds length;
    double quantizer = 0; ///< of the frames that are no key frames, their mean
};

/// What a part begins with.
struct PartBudget {
    double quantizer = 0; ///< where its frames start
    double bitsPerSecond = 0;
    double freeBits = 0; ///< may be spent beyond the rate before frames get coarser
};

/// The budget of the next part, after `earlier` ones of the same film: the whole shall keep to `bitsPerSecond` on average.
/// A film that is easy to code gets the finest quantiser that an eye could tell and stays below the rate.
[[nodiscard]] PartBudget partBudget(double bitsPerSecond, std::span<const PartCost> earlier);

/// One part. Bits go into a bucket as frames are coded and leave at the bit rate; the fuller it is beyond what is free,
/// the coarser the frames.
///
/// A key frame is much finer than the frames after it: a picture that stands still is shown as the key frame left it, for
/// seconds. While the budget is short, as with pictures that move all the time, it is only a little finer.
class PartRate final : public RateControl {
public:
    explicit PartRate(const PartBudget& budget) : m_budget(budget) {}

    [[nodiscard]] int quantizerAt(double time, bool isKeyFrame) override;
    void add(std::int64_t bits) override;

    /// What the part came to so far, over a `length`.
    [[nodiscard]] PartCost cost(Seconds length) const;

private:
    PartBudget m_budget;
    double m_fill = 0; ///< of the bucket, in bits
    double m_time = 0;
    std::int64_t m_bits = 0;
    double m_quantizerSum = 0;
    std::int64_t m_frames = 0; ///< that are no key frames
};

} // namespace morvelin
