#include "render/ScalingKernels.h"

#if defined(__x86_64__)

#include <algorithm>
#include <cstring>

#include <immintrin.h>

// Functions carry the instruction set themselves: the file is built for every processor and chosen at run time.
#define MORVELIN_AVX2 __attribute__((target("avx2")))

namespace morvelin {

namespace {

/// Rows that share one load of weights and shuffles: what the registers hold.
constexpr int kRowsAtOnce = 2;

MORVELIN_AVX2 inline __m256i load(const void* from) { return _mm256_loadu_si256(static_cast<const __m256i*>(from)); }
MORVELIN_AVX2 inline void store(void* to, __m256i value) { _mm256_storeu_si256(static_cast<__m256i*>(to), value); }

template <class Sample>
MORVELIN_AVX2 inline __m256i windowPair(const Sample* row, const int* windows) {
    const auto* low = reinterpret_cast<const __m128i*>(row + windows[0]);
    const auto* high = reinterpret_cast<const __m128i*>(row + windows[1]);
    return _mm256_inserti128_si256(_mm256_castsi128_si256(_mm_loadu_si128(low)), _mm_loadu_si128(high), 1);
}

template <class Sample>
MORVELIN_AVX2 inline __m256i packedRow(__m256i a, __m256i b) {
    constexpr int kShift = sizeof(Sample) == 1 ? kWeightBits - kRowBits : kWeightBits;
    const __m256i rounding = _mm256_set1_epi32(1 << (kShift - 1));
    a = _mm256_srai_epi32(_mm256_add_epi32(a, rounding), kShift);
    b = _mm256_srai_epi32(_mm256_add_epi32(b, rounding), kShift);
    return _mm256_packs_epi32(a, b);
}

/// One group of 16 outputs in each of `Rows` rows.
template <int Rows, class Sample>
MORVELIN_AVX2 inline void group(const RowTaps& taps, int index, const Sample* const* source, std::int16_t* const* out,
                                int outOffset) {
    // The next pair of samples lies two samples further in the window.
    const __m256i advance = sizeof(Sample) == 1 ? _mm256_set1_epi32(0x00020002) : _mm256_set1_epi32(0x04040404);
    const int pairs = taps.axis.taps / 2;
    const int* windows = taps.windows.data() + static_cast<std::ptrdiff_t>(index) * 4;
    const std::uint8_t* shuffles = taps.shuffles.data() + static_cast<std::ptrdiff_t>(index) * 64;
    const std::int16_t* weights = taps.pairWeights.data() + static_cast<std::ptrdiff_t>(index) * pairs * 32;
    __m256i shuffleA = load(shuffles);
    __m256i shuffleB = load(shuffles + 32);
    __m256i windowA[Rows];
    __m256i windowB[Rows];
    __m256i sumA[Rows];
    __m256i sumB[Rows];
    for (int row = 0; row < Rows; ++row) {
        windowA[row] = windowPair(source[row], windows);
        windowB[row] = windowPair(source[row], windows + 2);
        sumA[row] = sumB[row] = _mm256_setzero_si256();
    }
    for (int pair = 0; pair < pairs; ++pair, weights += 32) {
        const __m256i weightsA = load(weights);
        const __m256i weightsB = load(weights + 16);
        for (int row = 0; row < Rows; ++row) {
            sumA[row] = _mm256_add_epi32(sumA[row],
                                         _mm256_madd_epi16(_mm256_shuffle_epi8(windowA[row], shuffleA), weightsA));
            sumB[row] = _mm256_add_epi32(sumB[row],
                                         _mm256_madd_epi16(_mm256_shuffle_epi8(windowB[row], shuffleB), weightsB));
        }
        shuffleA = _mm256_add_epi8(shuffleA, advance);
        shuffleB = _mm256_add_epi8(shuffleB, advance);
    }
    for (int row = 0; row < Rows; ++row) store(out[row] + outOffset, packedRow<Sample>(sumA[row], sumB[row]));
}

template <class Sample>
MORVELIN_AVX2 void windowedRows(const RowTaps& taps, int begin, int end, const Sample* const* source,
                                std::int16_t* const* out, int rowCount) {
    int row = 0;
    for (; row + kRowsAtOnce <= rowCount; row += kRowsAtOnce)
        for (int index = begin; index < end; ++index)
            group<kRowsAtOnce>(taps, index, source + row, out + row, (index - begin) * RowTaps::kGroup);
    for (; row < rowCount; ++row)
        for (int index = begin; index < end; ++index)
            group<1>(taps, index, source + row, out + row, (index - begin) * RowTaps::kGroup);
}

MORVELIN_AVX2 inline int sumOf(__m256i values) {
    __m128i sum = _mm_add_epi32(_mm256_castsi256_si128(values), _mm256_extracti128_si256(values, 1));
    sum = _mm_add_epi32(sum, _mm_shuffle_epi32(sum, 0x4E));
    sum = _mm_add_epi32(sum, _mm_shuffle_epi32(sum, 0xB1));
    return _mm_cvtsi128_si32(sum);
}

MORVELIN_AVX2 void longRows(const RowTaps& taps, int begin, int end, const std::uint8_t* const* source,
                            std::int16_t* const* out, int rowCount) {
    constexpr int kShift = kWeightBits - kRowBits;
    const AxisTaps& axis = taps.axis;
    const int padded = (axis.taps + 15) / 16 * 16;
    const int first = begin * RowTaps::kGroup;
    const int last = std::min(end * RowTaps::kGroup, axis.count);
    for (int row = 0; row < rowCount; ++row) {
        for (int entry = first; entry < last; ++entry) {
            const std::uint8_t* samples = source[row] + axis.source[static_cast<std::size_t>(entry)];
            const std::int16_t* weights = taps.longWeights.data() + static_cast<std::ptrdiff_t>(entry) * padded;
            __m256i sum = _mm256_setzero_si256();
            for (int tap = 0; tap < padded; tap += 16) {
                const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(samples + tap));
                sum = _mm256_add_epi32(sum, _mm256_madd_epi16(_mm256_cvtepu8_epi16(bytes), load(weights + tap)));
            }
            const int value = (sumOf(sum) + (1 << (kShift - 1))) >> kShift;
            out[row][entry - first] = static_cast<std::int16_t>(std::clamp(value, -32768, 32767));
        }
    }
}

void rows(const RowTaps& taps, int begin, int end, const std::uint8_t* const* source, std::int16_t* const* out,
          int rowCount) {
    if (taps.fitsWindows)
        windowedRows(taps, begin, end, source, out, rowCount);
    else
        longRows(taps, begin, end, source, out, rowCount);
}

void deepRows(const RowTaps& taps, int begin, int end, const std::int16_t* const* source, std::int16_t* const* out,
              int rowCount) {
    if (taps.fitsWindows)
        windowedRows(taps, begin, end, source, out, rowCount);
    else
        plainScalingKernels().deepRows(taps, begin, end, source, out, rowCount);
}

/// Sums of 16 columns; each vector lane's first four samples in `low`, its last four in `high`.
struct Columns {
    __m256i low;
    __m256i high;
};

template <int Taps>
MORVELIN_AVX2 inline Columns columnSums(const ColumnTaps& taps, int x, __m256i low, __m256i high) {
    const int count = Taps > 0 ? Taps : taps.taps;
    for (int tap = 0; tap < count; tap += 2) {
        int pair = 0;
        std::memcpy(&pair, taps.weights + tap, sizeof(pair));
        const __m256i weights = _mm256_set1_epi32(pair);
        const __m256i a = load(taps.rows[tap] + x);
        const __m256i b = load(taps.rows[tap + 1] + x);
        low = _mm256_add_epi32(low, _mm256_madd_epi16(_mm256_unpacklo_epi16(a, b), weights));
        high = _mm256_add_epi32(high, _mm256_madd_epi16(_mm256_unpackhi_epi16(a, b), weights));
    }
    return {low, high};
}

MORVELIN_AVX2 inline __m256i packed(const Columns& sums, int shift) {
    const __m128i by = _mm_cvtsi32_si128(shift);
    return _mm256_packs_epi32(_mm256_sra_epi32(sums.low, by), _mm256_sra_epi32(sums.high, by));
}

/// 16 values of 16 bits as bytes.
MORVELIN_AVX2 inline __m128i bytesOf(__m256i values) {
    return _mm_packus_epi16(_mm256_castsi256_si128(values), _mm256_extracti128_si256(values, 1));
}

template <int Taps>
MORVELIN_AVX2 void columnsOf(const ColumnTaps& taps, int count, SampleRange range, std::uint8_t* out) {
    constexpr int kShift = kWeightBits + kRowBits;
    const __m256i rounding = _mm256_set1_epi32(1 << (kShift - 1));
    const __m128i lowest = _mm_set1_epi8(static_cast<char>(range.low));
    const __m128i highest = _mm_set1_epi8(static_cast<char>(range.high));
    for (int x = 0; x < count; x += 16) {
        const __m128i bytes = bytesOf(packed(columnSums<Taps>(taps, x, rounding, rounding), kShift));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + x), _mm_min_epu8(_mm_max_epu8(bytes, lowest), highest));
    }
}

void columns(const ColumnTaps& taps, int count, SampleRange range, std::uint8_t* out) {
    switch (taps.taps) {
    case 6: columnsOf<6>(taps, count, range, out); break;
    case 8: columnsOf<8>(taps, count, range, out); break;
    default: columnsOf<0>(taps, count, range, out); break;
    }
}

template <int Taps>
MORVELIN_AVX2 void ditheredColumnsOf(const ColumnTaps& taps, int count, DitherRow row, std::uint8_t* out) {
    const __m256i zero = _mm256_setzero_si256();
    for (int x = 0; x < count; x += 16) {
        const std::uint8_t* thresholds = row.thresholds + (row.phase + x) % DitherRow::kPeriod;
        const __m256i dither = _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(thresholds)));
        const __m256i low = _mm256_slli_epi32(_mm256_unpacklo_epi16(dither, zero), kWeightBits);
        const __m256i high = _mm256_slli_epi32(_mm256_unpackhi_epi16(dither, zero), kWeightBits);
        const Columns sums = columnSums<Taps>(taps, x, low, high);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + x), bytesOf(packed(sums, kWeightBits + kDeepBits)));
    }
}

void ditheredColumns(const ColumnTaps& taps, int count, DitherRow dither, std::uint8_t* out) {
    if (taps.taps == 4) ditheredColumnsOf<4>(taps, count, dither, out);
    else ditheredColumnsOf<0>(taps, count, dither, out);
}

MORVELIN_AVX2 void deepColumns(const ColumnTaps& taps, int count, int rowBits, std::int16_t* out) {
    const int shift = kWeightBits + rowBits - kDeepBits;
    const __m256i rounding = _mm256_set1_epi32(1 << (shift - 1));
    for (int x = 0; x < count; x += 16) store(out + x, packed(columnSums<0>(taps, x, rounding, rounding), shift));
}

} // namespace

const ScalingKernels* vectorScalingKernels() {
    static constexpr ScalingKernels kernels{rows, deepRows, columns, ditheredColumns, deepColumns};
    return __builtin_cpu_supports("avx2") != 0 ? &kernels : nullptr;
}

} // namespace morvelin

#else

namespace morvelin {

const ScalingKernels* vectorScalingKernels() { return nullptr; }

} // namespace morvelin

#endif
