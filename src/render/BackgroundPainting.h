// Paints the background of a film into the deep planes of its stage: gradient, wallpaper, picture or plain colour, and
// the grain on it.
#pragma once

#include <array>
#include <cmath>
#include <vector>

#include "platform/Picture.h"
#include "render/ColorMath.h"
#include "render/CompositionInstruction.h"
#include "render/PlaneScaling.h"

namespace morvelin {

/// Luma, Cb and Cr of a stage.
using DeepPlanes = std::array<DeepPlane, 3>;

constexpr int kDeepOne = 1 << kDeepBits;
/// Black in deep samples, for each plane.
constexpr std::array<int, 3> kDeepBlack = {16 * kDeepOne, 128 * kDeepOne, 128 * kDeepOne};

/// A level of 0..255 as a deep sample.
[[nodiscard]] inline std::int16_t deepSample(double level) {
    return static_cast<std::int16_t>(std::lround(std::clamp(level, 0.0, 255.0) * kDeepOne));
}

/// A sample after another at an opacity of 32768 has been laid over it.
[[nodiscard]] inline std::int16_t laidOver(int below, int above, int opacity) {
    return static_cast<std::int16_t>(below + (((above - below) * opacity + (1 << 14)) >> 15));
}

[[nodiscard]] inline std::array<double, 3> levelsOf(const Rgb& color) {
    const Ycc ycc = yccFromRgb(color);
    return {ycc.y, ycc.cb, ycc.cr};
}

/// Scales a plane of deep samples; calls `use(y, row)` for each row of a plane like `like`.
template <class Use>
void scaleDeepPlane(const DeepPlane& source, const PlaneTaps& taps, const DeepPlane& like, const Use& use) {
    ScalingScratch scratch;
    std::vector<std::int16_t> row(static_cast<std::size_t>(like.width() + RowTaps::kGroup));
    RowScaler<DeepPlane> scaler(taps, source, {0, 0, like.width(), like.height()}, scratch);
    for (int y = 0; y < like.height(); ++y) {
        scalingKernels().deepColumns(scaler.row(y), like.width(), kDeepBits, row.data());
        use(y, row.data());
    }
}

/// Sets every sample; the planes have the instruction's output size.
void paintBackground(const CompositionInstruction& instruction, Subsampling subsampling, DeepPlanes& planes);

} // namespace morvelin
