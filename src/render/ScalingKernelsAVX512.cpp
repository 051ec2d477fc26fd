#include "render/ScalingKernels.h"

#if defined(__x86_64__)

#include <algorithm>
#include <cstring>

#include <immintrin.h>

// GCC 12 takes its own headers' values without meaning for ones that were forgotten.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"

#define MORVELIN_AVX512 __attribute__((target("avx512f,avx512bw,avx512vl,avx512vnni")))

namespace morvelin {

namespace {

/// Rows that share one load of weights and shuffles: what the registers hold.
constexpr int kRowsAtOnce = 4;
constexpr int kColumnsAtOnce = 32;

/// The four windows of a group, one in each lane.
MORVELIN_AVX512 inline __m512i windowsOf(const std::uint8_t* row, const int* windows) {
    const auto window = [&](int lane) MORVELIN_AVX512 {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(row + windows[lane]));
    };
    const __m256i low = _mm256_inserti128_si256(_mm256_castsi128_si256(window(0)), window(1), 1);
    const __m256i high = _mm256_inserti128_si256(_mm256_castsi128_si256(window(2)), window(3), 1);
    return _mm512_inserti64x4(_mm512_castsi256_si512(low), high, 1);
}

/// 16 sums in the order of `RowTaps`, which puts the second and third lane in each other's place, as samples of a row.
MORVELIN_AVX512 inline __m256i rowSamples(__m512i sums) {
    const __m256i samples = _mm512_cvtsepi32_epi16(_mm512_srai_epi32(sums, kWeightBits - kRowBits));
    return _mm256_permute4x64_epi64(samples, _MM_SHUFFLE(3, 1, 2, 0));
}

/// All groups in each of `Rows` rows; `Pairs` of taps, or as many as there are with 0.
template <int Rows, int Pairs>
MORVELIN_AVX512 void groupsOf(const RowTaps& taps, int begin, int end, const std::uint8_t* const* source,
                              std::int16_t* const* out) {
    const int pairs = Pairs > 0 ? Pairs : taps.axis.taps / 2;
    const __m512i advance = _mm512_set1_epi32(0x00020002); // the next pair of samples lies two further in the window
    const __m512i rounding = _mm512_set1_epi32(1 << (kWeightBits - kRowBits - 1));
    // Copies: as far as the compiler knows, storing a vector may change what the arguments point to.
    const std::uint8_t* from[Rows];
    std::int16_t* to[Rows];
    std::copy_n(source, Rows, from);
    std::copy_n(out, Rows, to);
    const int* windows = taps.windows.data() + static_cast<std::ptrdiff_t>(begin) * 4;
    const std::uint8_t* shuffles = taps.shuffles.data() + static_cast<std::ptrdiff_t>(begin) * 64;
    const std::int16_t* weights = taps.pairWeights.data() + static_cast<std::ptrdiff_t>(begin) * pairs * 32;
    for (int group = begin; group < end; ++group, windows += 4, shuffles += 64) {
        __m512i window[Rows];
        __m512i sums[Rows];
        for (int row = 0; row < Rows; ++row) {
            window[row] = windowsOf(from[row], windows);
            sums[row] = rounding;
        }
        __m512i shuffle = _mm512_loadu_si512(shuffles);
        for (int pair = 0; pair < pairs; ++pair, weights += 32) {
            const __m512i pairWeights = _mm512_loadu_si512(weights);
            for (int row = 0; row < Rows; ++row)
                sums[row] = _mm512_dpwssd_epi32(sums[row], _mm512_shuffle_epi8(window[row], shuffle), pairWeights);
            shuffle = _mm512_add_epi8(shuffle, advance);
        }
        for (int row = 0; row < Rows; ++row) {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(to[row]), rowSamples(sums[row]));
            to[row] += RowTaps::kGroup;
        }
    }
}

template <int Rows>
void groups(const RowTaps& taps, int begin, int end, const std::uint8_t* const* source, std::int16_t* const* out) {
    switch (taps.axis.taps) {
    case 4: groupsOf<Rows, 2>(taps, begin, end, source, out); break;
    case 6: groupsOf<Rows, 3>(taps, begin, end, source, out); break;
    case 8: groupsOf<Rows, 4>(taps, begin, end, source, out); break;
    default: groupsOf<Rows, 0>(taps, begin, end, source, out); break;
    }
}

void rows(const RowTaps& taps, int begin, int end, const std::uint8_t* const* source, std::int16_t* const* out,
          int rowCount) {
    if (!taps.fitsWindows) return avx2ScalingKernels()->rows(taps, begin, end, source, out, rowCount);
    int row = 0;
    for (; row + kRowsAtOnce <= rowCount; row += kRowsAtOnce)
        groups<kRowsAtOnce>(taps, begin, end, source + row, out + row);
    for (; row < rowCount; ++row) groups<1>(taps, begin, end, source + row, out + row);
}

/// `Taps` rows with their weights, or as many as there are with 0.
template <int Taps>
MORVELIN_AVX512 void columnsOf(const ColumnTaps& taps, int count, SampleRange range, std::uint8_t* out) {
    constexpr int kShift = kWeightBits + kRowBits;
    constexpr int kMost = 8;
    const __m512i rounding = _mm512_set1_epi32(1 << (kShift - 1));
    const __m256i lowest = _mm256_set1_epi8(static_cast<char>(range.low));
    const __m256i highest = _mm256_set1_epi8(static_cast<char>(range.high));
    const std::int16_t* rows[kMost];
    __m512i weights[kMost / 2];
    for (int tap = 0; tap < Taps; tap += 2) {
        int pair = 0;
        std::memcpy(&pair, taps.weights + tap, sizeof(pair));
        weights[tap / 2] = _mm512_set1_epi32(pair);
        rows[tap] = taps.rows[tap] + taps.first;
        rows[tap + 1] = taps.rows[tap + 1] + taps.first;
    }
    for (int x = 0; x < count; x += kColumnsAtOnce) {
        const auto mask = static_cast<__mmask32>(count - x >= kColumnsAtOnce ? ~0U : (1U << (count - x)) - 1);
        __m512i low = rounding;
        __m512i high = rounding;
        for (int tap = 0; tap < Taps; tap += 2) {
            const __m512i a = _mm512_maskz_loadu_epi16(mask, rows[tap] + x);
            const __m512i b = _mm512_maskz_loadu_epi16(mask, rows[tap + 1] + x);
            low = _mm512_dpwssd_epi32(low, _mm512_unpacklo_epi16(a, b), weights[tap / 2]);
            high = _mm512_dpwssd_epi32(high, _mm512_unpackhi_epi16(a, b), weights[tap / 2]);
        }
        const __m512i values = _mm512_packs_epi32(_mm512_srai_epi32(low, kShift), _mm512_srai_epi32(high, kShift));
        const __m256i bytes = _mm512_cvtusepi16_epi8(_mm512_max_epi16(values, _mm512_setzero_si512()));
        _mm256_mask_storeu_epi8(out + x, mask, _mm256_min_epu8(_mm256_max_epu8(bytes, lowest), highest));
    }
}

void columns(const ColumnTaps& taps, int count, SampleRange range, std::uint8_t* out) {
    switch (taps.taps) {
    case 6: columnsOf<6>(taps, count, range, out); break;
    case 8: columnsOf<8>(taps, count, range, out); break;
    default: avx2ScalingKernels()->columns(taps, count, range, out); break;
    }
}

} // namespace

const ScalingKernels* avx512ScalingKernels() {
    static const bool isThere = avx2ScalingKernels() != nullptr && __builtin_cpu_supports("avx512bw") != 0 &&
                                __builtin_cpu_supports("avx512vl") != 0 && __builtin_cpu_supports("avx512vnni") != 0;
    if (!isThere) return nullptr;
    // The loops over bytes are those that a moving camera spends its time in.
    static const ScalingKernels& avx2 = *avx2ScalingKernels();
    static const ScalingKernels kernels{rows, avx2.deepRows, columns, avx2.ditheredColumns, avx2.deepColumns};
    return &kernels;
}

} // namespace morvelin

#else

namespace morvelin {

const ScalingKernels* avx512ScalingKernels() { return nullptr; }

} // namespace morvelin

#endif
