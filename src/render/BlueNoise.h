// One fixed tile of noise without low frequencies: the thresholds that keep gradients free of bands, and film grain.
#pragma once

#include <array>
#include <cstdint>

#include "render/ScalingKernels.h"

namespace morvelin {

/// A square tile that repeats without a seam, each sample of which has a rank of its own.
class BlueNoise {
public:
    static constexpr int kSide = DitherRow::kPeriod;

    /// The program's one tile; made at the first call, the same in every run.
    [[nodiscard]] static const BlueNoise& tile();

    /// 0..4095.
    [[nodiscard]] int rank(int x, int y) const {
        return m_ranks[static_cast<std::size_t>((y & (kSide - 1)) * kSide + (x & (kSide - 1)))];
    }
    /// Thresholds for the samples of row `y` from column `x` on.
    [[nodiscard]] DitherRow ditherRow(int x, int y) const {
        return {m_thresholds[static_cast<std::size_t>(y & (kSide - 1))].data(), x & (kSide - 1)};
    }

private:
    BlueNoise();

    std::array<std::uint16_t, kSide * kSide> m_ranks{};
    std::array<std::array<std::uint8_t, kSide + 16>, kSide> m_thresholds{};
};

} // namespace morvelin
