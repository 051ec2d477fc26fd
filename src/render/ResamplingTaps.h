// Weights that make the samples of one axis of an output from samples of a source. Pure values; whoever scales keeps
// them while the zoom stands still.
#pragma once

#include <cstdint>
#include <vector>

namespace morvelin {

/// The weights of one output sample sum to this.
constexpr int kWeightBits = 14;
constexpr int kWeightOne = 1 << kWeightBits;

/// Output sample `i` of an axis shows the source at `start + i * step`, in source samples (0 is the first's centre).
struct AxisMapping {
    double start = 0;
    double step = 1;

    bool operator==(const AxisMapping&) const = default;
};

/// A filter kernel's weights at evenly spaced sub-sample phases. At phase `f` of a place between the samples `n` and
/// `n + 1`, tap `k` weighs sample `n - taps / 2 + 1 + k`.
struct PhaseTable {
    int phases = 0;
    int taps = 0; ///< even
    std::vector<std::int16_t> weights;
};

/// Lanczos with three lobes, widened when `step` (source samples per output sample) is above 1: text stays crisp and
/// nothing aliases.
[[nodiscard]] PhaseTable lanczosPhases(double step);
/// Catmull-Rom's cubic, widened in the same way: for smooth pictures at half of Lanczos' cost, and for small ones with
/// hard outlines, around which it leaves less of a halo.
[[nodiscard]] PhaseTable catmullRomPhases(double step = 1);
/// A Gaussian blur of `sigma` source samples, and then Lanczos.
[[nodiscard]] PhaseTable gaussianPhases(double sigma, double step);

/// For each of `count` output samples from `first` on: which source samples it is made of, and their weights. Samples
/// past the source's ends repeat its end samples.
struct AxisTaps {
    int first = 0;
    int count = 0;
    int taps = 0; ///< even; at most one more than the source has samples
    int sourceLength = 0;
    std::vector<int> source; ///< first source sample of each output sample
    std::vector<std::int16_t> weights;

    [[nodiscard]] const std::int16_t* weightsOf(int entry) const {
        return weights.data() + static_cast<std::ptrdiff_t>(entry) * taps;
    }
};

[[nodiscard]] AxisTaps axisTaps(const PhaseTable& phases, AxisMapping mapping, int first, int count, int sourceLength);

} // namespace morvelin
