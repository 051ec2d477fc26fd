// The inner loops of scaling, in a plain form and for processors with AVX2 or AVX-512. All give the same bits, so a
// picture doesn't depend on the machine, nor on how it was cut into boxes.
//
// An image is scaled along its rows first. The samples in between are 16 bits wide: 6 bits of fraction where they come
// from 8-bit samples, as Lanczos overshoots; 7 bits where they come from deep ones.
#pragma once

#include <cstdint>
#include <vector>

#include "render/ResamplingTaps.h"

namespace morvelin {

/// Fraction bits of deep samples, of which backgrounds and blurs are made before they are dithered into pictures.
constexpr int kDeepBits = 7;
/// Fraction bits of rows made from 8-bit samples.
constexpr int kRowBits = 6;

/// The taps of a row, laid out for vector loops: groups of 16 output samples, each made of four lanes of four
/// neighbours that read one window of 16 bytes of the source.
struct RowTaps {
    static constexpr int kGroup = 16;

    AxisTaps axis;
    int groups = 0;
    bool fitsWindows = false;
    std::vector<int> windows;              ///< 4 a group: the first sample of each lane's window
    std::vector<std::uint8_t> shuffles;    ///< 64 a group: where in its window each output's first pair lies
    std::vector<std::int16_t> pairWeights; ///< 32 a group and pair of taps
    std::vector<std::int16_t> longWeights; ///< where a window is too short: all weights, in multiples of 16 a sample
};

enum class SampleWidth { Byte = 1, Deep = 2 };

/// `width` is that of the rows that will be read.
[[nodiscard]] RowTaps rowTaps(AxisTaps axis, SampleWidth width);

/// Limits of a plane's samples.
struct SampleRange {
    std::uint8_t low = 0;
    std::uint8_t high = 255;
};

/// Source rows and their weights that make one output row.
struct ColumnTaps {
    const std::int16_t* const* rows = nullptr;
    const std::int16_t* weights = nullptr;
    int taps = 0;  ///< even
    int first = 0; ///< the sample of each row to begin with
};

/// Thresholds of 0..127 that repeat along a row.
struct DitherRow {
    static constexpr int kPeriod = 64;

    const std::uint8_t* thresholds = nullptr; ///< a period and the start of the next, `kPeriod` + 16
    int phase = 0;                            ///< of the first sample
};

/// A row loop makes the samples of the groups from `begin` up to `end` and needs room for whole groups; rows that are
/// read have 32 bytes to spare at their end. A column loop reads up to the next multiple of 16 samples; one for pictures writes
/// just what it was asked for, one for deep samples as much as it reads.
struct ScalingKernels {
    void (*rows)(const RowTaps& taps, int begin, int end, const std::uint8_t* const* source, std::int16_t* const* out,
                 int rowCount);
    void (*deepRows)(const RowTaps& taps, int begin, int end, const std::int16_t* const* source,
                     std::int16_t* const* out, int rowCount);
    /// From rows of 8-bit samples, rounded, limited to `range`.
    void (*columns)(const ColumnTaps& taps, int count, SampleRange range, std::uint8_t* out);
    /// From deep rows, dithered.
    void (*ditheredColumns)(const ColumnTaps& taps, int count, DitherRow dither, std::uint8_t* out);
    /// From rows with `rowBits` bits of fraction to deep samples.
    void (*deepColumns)(const ColumnTaps& taps, int count, int rowBits, std::int16_t* out);
};

/// The fastest loops that this processor runs.
[[nodiscard]] const ScalingKernels& scalingKernels();
/// The loops that run everywhere.
[[nodiscard]] const ScalingKernels& plainScalingKernels();
/// The loops for AVX2, and those for AVX-512 with VNNI; null where the processor has none.
[[nodiscard]] const ScalingKernels* avx2ScalingKernels();
[[nodiscard]] const ScalingKernels* avx512ScalingKernels();

} // namespace morvelin
