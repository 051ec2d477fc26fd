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

/// What `RowTaps` holds, as the loops read it.
struct Program {
    const int* windows;
    const std::uint8_t* shuffles;
    const std::int16_t* weights;
    int pairs;

    /// Of the group `index`.
    Program(const RowTaps& taps, int index)
        : windows(taps.windows.data() + static_cast<std::ptrdiff_t>(index) * 4),
          shuffles(taps.shuffles.data() + static_cast<std::ptrdiff_t>(index) * 64),
          weights(taps.pairWeights.data() + static_cast<std::ptrdiff_t>(index) * taps.axis.taps * 16),
          pairs(taps.axis.taps / 2) {}

    void advance() {
        windows += 4;
        shuffles += 64;
        weights += static_cast<std::ptrdiff_t>(pairs) * 32;
    }
};

/// One group of 16 outputs in each of `Rows` rows; `Pairs` of taps, or as many as there are with 0.
template <int Rows, int Pairs, class Sample>
MORVELIN_AVX2 inline void group(const Program& program, const Sample* const* source, std::int16_t* const* out,
                                std::ptrdiff_t outOffset) {
    // The next pair of samples lies two samples further in the window.
    const __m256i advance = sizeof(Sample) == 1 ? _mm256_set1_epi32(0x00020002) : _mm256_set1_epi32(0x04040404);
    const int pairs = Pairs > 0 ? Pairs : program.pairs;
    __m256i shuffleA = load(program.shuffles);
    __m256i shuffleB = load(program.shuffles + 32);
    __m256i windowA[Rows];
    __m256i windowB[Rows];
    __m256i sumA[Rows];
    __m256i sumB[Rows];
    for (int row = 0; row < Rows; ++row) {
        windowA[row] = windowPair(source[row], program.windows);
        windowB[row] = windowPair(source[row], program.windows + 2);
        sumA[row] = sumB[row] = _mm256_setzero_si256();
    }
    for (int pair = 0; pair < pairs; ++pair) {
        const __m256i weightsA = load(program.weights + pair * 32);
        const __m256i weightsB = load(program.weights + pair * 32 + 16);
        for (int row = 0; row < Rows; ++row) {
            const __m256i a = _mm256_madd_epi16(_mm256_shuffle_epi8(windowA[row], shuffleA), weightsA);
            const __m256i b = _mm256_madd_epi16(_mm256_shuffle_epi8(windowB[row], shuffleB), weightsB);
            sumA[row] = _mm256_add_epi32(sumA[row], a);
            sumB[row] = _mm256_add_epi32(sumB[row], b);
        }
        shuffleA = _mm256_add_epi8(shuffleA, advance);
        shuffleB = _mm256_add_epi8(shuffleB, advance);
    }
    for (int row = 0; row < Rows; ++row) store(out[row] + outOffset, packedRow<Sample>(sumA[row], sumB[row]));
}

template <int Rows, int Pairs, class Sample>
MORVELIN_AVX2 void groupsOf(const RowTaps& taps, int begin, int end, const Sample* const* source,
                            std::int16_t* const* out) {
    // Copies: as far as the compiler knows, storing a vector may change what the arguments point to.
    const Sample* from[Rows];
    std::int16_t* to[Rows];
    std::copy_n(source, Rows, from);
    std::copy_n(out, Rows, to);
    Program program(taps, begin);
    for (int index = begin; index < end; ++index, program.advance())
        group<Rows, Pairs>(program, from, to, static_cast<std::ptrdiff_t>(index - begin) * RowTaps::kGroup);
}

template <int Rows, class Sample>
void groups(const RowTaps& taps, int begin, int end, const Sample* const* source, std::int16_t* const* out) {
    switch (taps.axis.taps) {
    case 4: groupsOf<Rows, 2>(taps, begin, end, source, out); break;
    case 6: groupsOf<Rows, 3>(taps, begin, end, source, out); break;
    case 8: groupsOf<Rows, 4>(taps, begin, end, source, out); break;
    default: groupsOf<Rows, 0>(taps, begin, end, source, out); break;
    }
}

template <class Sample>
void windowedRows(const RowTaps& taps, int begin, int end, const Sample* const* source, std::int16_t* const* out,
                  int rowCount) {
    int row = 0;
    for (; row + kRowsAtOnce <= rowCount; row += kRowsAtOnce)
        groups<kRowsAtOnce>(taps, begin, end, source + row, out + row);
    for (; row < rowCount; ++row) groups<1>(taps, begin, end, source + row, out + row);
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

/// `ColumnTaps` of at most `Most` rows as the loops read it: as far as the compiler knows, storing a vector may change
/// what the arguments point to.
template <int Most>
struct ColumnProgram {
    const std::int16_t* rows[Most];
    __m256i weights[Most / 2];

    MORVELIN_AVX2 explicit ColumnProgram(const ColumnTaps& taps) {
        for (int tap = 0; tap < Most; tap += 2) {
            int pair = 0;
            std::memcpy(&pair, taps.weights + tap, sizeof(pair));
            rows[tap] = taps.rows[tap] + taps.first;
            rows[tap + 1] = taps.rows[tap + 1] + taps.first;
            weights[tap / 2] = _mm256_set1_epi32(pair);
        }
    }
};

/// Any number of rows.
template <>
struct ColumnProgram<0> {
    const ColumnTaps& taps;
};

/// Sums of 16 columns; each vector lane's first four samples in `low`, its last four in `high`.
struct Columns {
    __m256i low;
    __m256i high;
};

MORVELIN_AVX2 inline void addPair(const std::int16_t* first, const std::int16_t* second, __m256i weights,
                                  Columns& sums) {
    const __m256i a = load(first);
    const __m256i b = load(second);
    sums.low = _mm256_add_epi32(sums.low, _mm256_madd_epi16(_mm256_unpacklo_epi16(a, b), weights));
    sums.high = _mm256_add_epi32(sums.high, _mm256_madd_epi16(_mm256_unpackhi_epi16(a, b), weights));
}

template <int Taps>
MORVELIN_AVX2 inline Columns columnSums(const ColumnProgram<Taps>& program, int x, Columns sums) {
    for (int tap = 0; tap < Taps; tap += 2)
        addPair(program.rows[tap] + x, program.rows[tap + 1] + x, program.weights[tap / 2], sums);
    return sums;
}

template <>
MORVELIN_AVX2 inline Columns columnSums(const ColumnProgram<0>& program, int x, Columns sums) {
    const ColumnTaps& taps = program.taps;
    for (int tap = 0; tap < taps.taps; tap += 2) {
        int pair = 0;
        std::memcpy(&pair, taps.weights + tap, sizeof(pair));
        const int from = taps.first + x;
        addPair(taps.rows[tap] + from, taps.rows[tap + 1] + from, _mm256_set1_epi32(pair), sums);
    }
    return sums;
}

MORVELIN_AVX2 inline __m256i packed(const Columns& sums, int shift) {
    const __m128i by = _mm_cvtsi32_si128(shift);
    return _mm256_packs_epi32(_mm256_sra_epi32(sums.low, by), _mm256_sra_epi32(sums.high, by));
}

/// 16 values of 16 bits as bytes.
MORVELIN_AVX2 inline __m128i bytesOf(__m256i values) {
    return _mm_packus_epi16(_mm256_castsi256_si128(values), _mm256_extracti128_si256(values, 1));
}

MORVELIN_AVX2 inline void storeBytes(std::uint8_t* to, __m128i bytes) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), bytes);
}

/// Calls `bytesAt(x)` for every 16 columns, and stores no more than `count` samples.
template <class BytesAt>
MORVELIN_AVX2 inline void storeColumns(int count, std::uint8_t* out, const BytesAt& bytesAt) {
    int x = 0;
    for (; x + 16 <= count; x += 16) storeBytes(out + x, bytesAt(x));
    if (x == count) return;
    std::uint8_t last[16];
    storeBytes(last, bytesAt(x));
    std::memcpy(out + x, last, static_cast<std::size_t>(count - x));
}

template <int Taps>
MORVELIN_AVX2 void columnsOf(const ColumnTaps& taps, int count, SampleRange range, std::uint8_t* out) {
    constexpr int kShift = kWeightBits + kRowBits;
    const __m256i rounding = _mm256_set1_epi32(1 << (kShift - 1));
    const __m128i lowest = _mm_set1_epi8(static_cast<char>(range.low));
    const __m128i highest = _mm_set1_epi8(static_cast<char>(range.high));
    const ColumnProgram<Taps> program{taps};
    storeColumns(count, out, [&](int x) MORVELIN_AVX2 {
        const __m128i bytes = bytesOf(packed(columnSums<Taps>(program, x, {rounding, rounding}), kShift));
        return _mm_min_epu8(_mm_max_epu8(bytes, lowest), highest);
    });
}

void columns(const ColumnTaps& taps, int count, SampleRange range, std::uint8_t* out) {
    switch (taps.taps) {
    case 6: columnsOf<6>(taps, count, range, out); break;
    case 8: columnsOf<8>(taps, count, range, out); break;
    default: columnsOf<0>(taps, count, range, out); break;
    }
}

template <int Taps>
MORVELIN_AVX2 void ditheredColumnsOf(const ColumnTaps& taps, int count, DitherRow dither, std::uint8_t* out) {
    const __m256i zero = _mm256_setzero_si256();
    const ColumnProgram<Taps> program{taps};
    storeColumns(count, out, [&](int x) MORVELIN_AVX2 {
        const std::uint8_t* thresholds = dither.thresholds + (dither.phase + x) % DitherRow::kPeriod;
        const __m256i wide = _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(thresholds)));
        const Columns start{_mm256_slli_epi32(_mm256_unpacklo_epi16(wide, zero), kWeightBits),
                            _mm256_slli_epi32(_mm256_unpackhi_epi16(wide, zero), kWeightBits)};
        return bytesOf(packed(columnSums<Taps>(program, x, start), kWeightBits + kDeepBits));
    });
}

void ditheredColumns(const ColumnTaps& taps, int count, DitherRow dither, std::uint8_t* out) {
    switch (taps.taps) {
    case 2: ditheredColumnsOf<2>(taps, count, dither, out); break;
    case 4: ditheredColumnsOf<4>(taps, count, dither, out); break;
    default: ditheredColumnsOf<0>(taps, count, dither, out); break;
    }
}

MORVELIN_AVX2 void deepColumns(const ColumnTaps& taps, int count, int rowBits, std::int16_t* out) {
    const int shift = kWeightBits + rowBits - kDeepBits;
    const __m256i rounding = _mm256_set1_epi32(1 << (shift - 1));
    const ColumnProgram<0> program{taps};
    for (int x = 0; x < count; x += 16) store(out + x, packed(columnSums<0>(program, x, {rounding, rounding}), shift));
}

} // namespace

const ScalingKernels* avx2ScalingKernels() {
    static constexpr ScalingKernels kernels{rows, deepRows, columns, ditheredColumns, deepColumns};
    return __builtin_cpu_supports("avx2") != 0 ? &kernels : nullptr;
}

} // namespace morvelin

#else

namespace morvelin {

const ScalingKernels* avx2ScalingKernels() { return nullptr; }

} // namespace morvelin

#endif
