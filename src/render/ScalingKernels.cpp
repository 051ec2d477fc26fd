#include "render/ScalingKernels.h"

#include <algorithm>
#include <utility>

namespace morvelin {

namespace {

constexpr int kLane = 4;
constexpr int kLanes = RowTaps::kGroup / kLane;
constexpr int kWindowBytes = 16;
/// The order in which a group's lanes lie in two vectors, so that packing these puts the outputs in order.
constexpr int kLaneOrder[kLanes] = {0, 2, 1, 3};

std::int16_t saturated(int value) { return static_cast<std::int16_t>(std::clamp(value, -32768, 32767)); }

constexpr int half(int bits) { return 1 << (bits - 1); }

/// Entries past the last repeat it; their outputs are never looked at.
int lastOr(const AxisTaps& axis, int entry) { return std::min(entry, axis.count - 1); }

int sourceOf(const AxisTaps& axis, int entry) { return axis.source[static_cast<std::size_t>(lastOr(axis, entry))]; }

bool windowsFit(const AxisTaps& axis, int groups, int windowSamples) {
    for (int lane = 0; lane < groups * kLanes; ++lane) {
        const int span = sourceOf(axis, lane * kLane + kLane - 1) - sourceOf(axis, lane * kLane);
        if (span < 0 || span + axis.taps > windowSamples) return false;
    }
    return true;
}

void appendLane(RowTaps& taps, int firstEntry, int bytes) {
    const int window = sourceOf(taps.axis, firstEntry);
    taps.windows.push_back(window);
    for (int i = 0; i < kLane; ++i) {
        const int offset = (sourceOf(taps.axis, firstEntry + i) - window) * bytes;
        for (int sample = 0; sample < 2; ++sample) {
            taps.shuffles.push_back(static_cast<std::uint8_t>(offset + sample * bytes));
            // A byte becomes 16 bits by a zero above it; an index with the top bit set gives zero.
            taps.shuffles.push_back(bytes == 1 ? 0x80 : static_cast<std::uint8_t>(offset + sample * bytes + 1));
        }
    }
}

void appendPairWeights(RowTaps& taps, int group, int pair) {
    for (const int lane : kLaneOrder) {
        for (int i = 0; i < kLane; ++i) {
            const std::int16_t* weights = taps.axis.weightsOf(
                lastOr(taps.axis, group * RowTaps::kGroup + lane * kLane + i));
            taps.pairWeights.push_back(weights[2 * pair]);
            taps.pairWeights.push_back(weights[2 * pair + 1]);
        }
    }
}

void appendLongWeights(RowTaps& taps) {
    const int padded = (taps.axis.taps + 15) / 16 * 16;
    const auto stride = static_cast<std::size_t>(padded);
    taps.longWeights.assign(stride * static_cast<std::size_t>(taps.axis.count), 0);
    for (int entry = 0; entry < taps.axis.count; ++entry)
        std::copy_n(taps.axis.weightsOf(entry), taps.axis.taps,
                    taps.longWeights.begin() + static_cast<std::ptrdiff_t>(entry) * padded);
}

template <class Sample>
void plainRows(const RowTaps& taps, int begin, int end, const Sample* const* source, std::int16_t* const* out,
               int rowCount) {
    constexpr int kShift = sizeof(Sample) == 1 ? kWeightBits - kRowBits : kWeightBits;
    const AxisTaps& axis = taps.axis;
    const int first = begin * RowTaps::kGroup;
    const int last = std::min(end * RowTaps::kGroup, axis.count);
    for (int row = 0; row < rowCount; ++row) {
        for (int entry = first; entry < last; ++entry) {
            const Sample* samples = source[row] + axis.source[static_cast<std::size_t>(entry)];
            const std::int16_t* weights = axis.weightsOf(entry);
            int sum = half(kShift);
            for (int tap = 0; tap < axis.taps; ++tap) sum += samples[tap] * weights[tap];
            out[row][entry - first] = saturated(sum >> kShift);
        }
    }
}

int columnSum(const ColumnTaps& taps, int x) {
    int sum = 0;
    for (int tap = 0; tap < taps.taps; ++tap) sum += taps.rows[tap][taps.first + x] * taps.weights[tap];
    return sum;
}

void plainColumns(const ColumnTaps& taps, int count, SampleRange range, std::uint8_t* out) {
    constexpr int kShift = kWeightBits + kRowBits;
    for (int x = 0; x < count; ++x) {
        const int value = (columnSum(taps, x) + half(kShift)) >> kShift;
        out[x] = static_cast<std::uint8_t>(std::clamp<int>(value, range.low, range.high));
    }
}

void plainDitheredColumns(const ColumnTaps& taps, int count, DitherRow dither, std::uint8_t* out) {
    for (int x = 0; x < count; ++x) {
        const int threshold = dither.thresholds[(dither.phase + x) % DitherRow::kPeriod];
        const int value = (columnSum(taps, x) + (threshold << kWeightBits)) >> (kWeightBits + kDeepBits);
        out[x] = static_cast<std::uint8_t>(std::clamp(value, 0, 255));
    }
}

void plainDeepColumns(const ColumnTaps& taps, int count, int rowBits, std::int16_t* out) {
    const int shift = kWeightBits + rowBits - kDeepBits;
    for (int x = 0; x < count; ++x) out[x] = saturated((columnSum(taps, x) + half(shift)) >> shift);
}

} // namespace

RowTaps rowTaps(AxisTaps axis, SampleWidth width) {
    const int bytes = static_cast<int>(width);
    RowTaps taps;
    taps.axis = std::move(axis);
    taps.groups = (taps.axis.count + RowTaps::kGroup - 1) / RowTaps::kGroup;
    taps.fitsWindows = windowsFit(taps.axis, taps.groups, kWindowBytes / bytes);
    if (!taps.fitsWindows) {
        appendLongWeights(taps);
        return taps;
    }
    const auto groups = static_cast<std::size_t>(taps.groups);
    taps.windows.reserve(groups * kLanes);
    taps.shuffles.reserve(groups * 64);
    taps.pairWeights.reserve(groups * static_cast<std::size_t>(taps.axis.taps) * RowTaps::kGroup);
    for (int group = 0; group < taps.groups; ++group) {
        for (const int lane : kLaneOrder) appendLane(taps, group * RowTaps::kGroup + lane * kLane, bytes);
        for (int pair = 0; pair < taps.axis.taps / 2; ++pair) appendPairWeights(taps, group, pair);
    }
    return taps;
}

const ScalingKernels& plainScalingKernels() {
    static constexpr ScalingKernels kernels{plainRows<std::uint8_t>, plainRows<std::int16_t>, plainColumns,
                                            plainDitheredColumns, plainDeepColumns};
    return kernels;
}

const ScalingKernels& scalingKernels() {
    static const ScalingKernels& fastest = avx512ScalingKernels() != nullptr ? *avx512ScalingKernels()
                                           : avx2ScalingKernels() != nullptr ? *avx2ScalingKernels()
                                                                             : plainScalingKernels();
    return fastest;
}

} // namespace morvelin
