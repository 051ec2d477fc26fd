#include "media/ColorConversion.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace morvelin {

namespace {

// BT.709 with R, G, B of 0 to 255 and luma of 16 to 235, chroma of 16 to 240 (ITU-R BT.709-6, items 3.2 to 3.4), in
// units of 2^-15. Each row of chroma weights sums to 0, so that grey stays grey.
constexpr int kScaleBits = 15;
struct Weights {
    int b, g, r;
};
constexpr Weights kLuma{2032, 20127, 5983};
constexpr Weights kCb{14392, -11094, -3298};
constexpr Weights kCr{-1320, -13072, 14392};
static_assert(kCb.b + kCb.g + kCb.r == 0 && kCr.b + kCr.g + kCr.r == 0);

constexpr int kChromaBits = kScaleBits + 3; // a chroma sample sums pixels with weights of 8 in all
constexpr int kLumaBias = (16 << kScaleBits) + (1 << (kScaleBits - 1));
constexpr int kChromaBias = (128 << kChromaBits) + (1 << (kChromaBits - 1));

/// Two rows of pixels and the samples that they become.
struct RowPair {
    const std::uint8_t* topPixels;
    const std::uint8_t* bottomPixels;
    std::uint8_t* topLuma;
    std::uint8_t* bottomLuma;
    std::uint8_t* cb;
    std::uint8_t* cr;
};

int weighted(const Weights& weights, int b, int g, int r) { return weights.b * b + weights.g * g + weights.r * r; }

std::uint8_t lumaOf(const std::uint8_t* pixel) {
    return static_cast<std::uint8_t>((weighted(kLuma, pixel[0], pixel[1], pixel[2]) + kLumaBias) >> kScaleBits);
}

void convertScalar(const RowPair& rows, int begin, int end) {
    for (int x = begin; x < end; ++x) {
        rows.topLuma[x] = lumaOf(rows.topPixels + 4 * x);
        rows.bottomLuma[x] = lumaOf(rows.bottomPixels + 4 * x);
    }
    for (int x = begin; x < end; x += 2) {
        const int left = std::max(x - 1, 0);
        std::array<int, 3> sum{};
        for (std::size_t channel = 0; channel < sum.size(); ++channel)
            for (const std::uint8_t* row : {rows.topPixels + channel, rows.bottomPixels + channel})
                sum[channel] += row[4 * left] + 2 * row[4 * x] + row[4 * (x + 1)];
        const auto sample = [&sum](const Weights& weights) {
            return static_cast<std::uint8_t>((weighted(weights, sum[0], sum[1], sum[2]) + kChromaBias) >> kChromaBits);
        };
        rows.cb[x / 2] = sample(kCb);
        rows.cr[x / 2] = sample(kCr);
    }
}

#if defined(__x86_64__)

/// Weights for pairs of 16-bit lanes: blue and red, and green alone.
struct VectorWeights {
    __m256i blueRed, green;
};

[[gnu::target("avx2")]] inline VectorWeights vectorWeights(const Weights& weights) {
    return {_mm256_set1_epi32((weights.b & 0xFFFF) | weights.r * 65536), _mm256_set1_epi32(weights.g & 0xFFFF)};
}

/// Eight pixels as two vectors of 16-bit lanes: blue and red, green and the unused byte.
struct Channels {
    __m256i blueRed, green;
};

[[gnu::target("avx2")]] inline Channels loadPixels(const std::uint8_t* pixels) {
    const __m256i low = _mm256_set1_epi32(0x00FF00FF);
    const __m256i packed = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(pixels));
    return {_mm256_and_si256(packed, low), _mm256_srli_epi16(packed, 8)};
}

[[gnu::target("avx2")]] inline __m256i weighted(const VectorWeights& weights, const Channels& channels) {
    return _mm256_add_epi32(_mm256_madd_epi16(channels.blueRed, weights.blueRed),
                            _mm256_madd_epi16(channels.green, weights.green));
}

/// Sixteen luma samples of two vectors of pixels.
[[gnu::target("avx2")]] inline __m128i lumaOf(const VectorWeights& weights, const Channels& a, const Channels& b) {
    const __m256i bias = _mm256_set1_epi32(kLumaBias);
    const __m256i first = _mm256_srli_epi32(_mm256_add_epi32(weighted(weights, a), bias), kScaleBits);
    const __m256i second = _mm256_srli_epi32(_mm256_add_epi32(weighted(weights, b), bias), kScaleBits);
    const __m256i words = _mm256_permute4x64_epi64(_mm256_packus_epi32(first, second), 0b11'01'10'00);
    return _mm_packus_epi16(_mm256_castsi256_si128(words), _mm256_extracti128_si256(words, 1));
}

/// Of sixteen lanes those with an even, or an odd, number.
template <int kSelect>
[[gnu::target("avx2")]] inline __m256i everySecond(__m256i a, __m256i b) {
    const __m256 mixed = _mm256_shuffle_ps(_mm256_castsi256_ps(a), _mm256_castsi256_ps(b), kSelect);
    return _mm256_permute4x64_epi64(_mm256_castps_si256(mixed), 0b11'01'10'00);
}

/// Sums 1 2 1 around each even column. `lastOdd` carries the odd columns from one call to the next.
[[gnu::target("avx2")]] inline __m256i sumAcross(__m256i a, __m256i b, __m256i& lastOdd) {
    const __m256i even = everySecond<0b10'00'10'00>(a, b);
    const __m256i odd = everySecond<0b11'01'11'01>(a, b);
    const __m256i straddling = _mm256_permute2x128_si256(lastOdd, odd, 0x21);
    const __m256i left = _mm256_alignr_epi8(odd, straddling, 12);
    lastOdd = odd;
    return _mm256_add_epi16(_mm256_add_epi16(left, odd), _mm256_slli_epi16(even, 1));
}

[[gnu::target("avx2")]] inline void storeChroma(const VectorWeights& weights, const Channels& sums,
                                                std::uint8_t* samples) {
    const __m256i bias = _mm256_set1_epi32(kChromaBias);
    const __m256i values = _mm256_srli_epi32(_mm256_add_epi32(weighted(weights, sums), bias), kChromaBits);
    const __m128i words = _mm_packus_epi32(_mm256_castsi256_si128(values), _mm256_extracti128_si256(values, 1));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(samples), _mm_packus_epi16(words, words));
}

[[gnu::target("avx2")]] inline Channels sum(const Channels& a, const Channels& b) {
    return {_mm256_add_epi16(a.blueRed, b.blueRed), _mm256_add_epi16(a.green, b.green)};
}

/// The same numbers as `convertScalar`, sixteen columns at a time. Gives the column where it had to stop.
[[gnu::target("avx2")]] int convertAVX2(const RowPair& rows, int begin, int end) {
    const VectorWeights luma = vectorWeights(kLuma);
    const VectorWeights cb = vectorWeights(kCb);
    const VectorWeights cr = vectorWeights(kCr);

    // The column left of the first one, in all lanes.
    const int left = std::max(begin - 1, 0);
    const auto both = [&rows, left](int channel) {
        return rows.topPixels[4 * left + channel] + rows.bottomPixels[4 * left + channel];
    };
    Channels lastOdd{_mm256_set1_epi32(both(0) | both(2) << 16), _mm256_set1_epi32(both(1))};

    int x = begin;
    for (; x + 16 <= end; x += 16) {
        const Channels topA = loadPixels(rows.topPixels + 4 * x);
        const Channels topB = loadPixels(rows.topPixels + 4 * x + 32);
        const Channels bottomA = loadPixels(rows.bottomPixels + 4 * x);
        const Channels bottomB = loadPixels(rows.bottomPixels + 4 * x + 32);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(rows.topLuma + x), lumaOf(luma, topA, topB));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(rows.bottomLuma + x), lumaOf(luma, bottomA, bottomB));

        const Channels a = sum(topA, bottomA);
        const Channels b = sum(topB, bottomB);
        const Channels sums{sumAcross(a.blueRed, b.blueRed, lastOdd.blueRed),
                            sumAcross(a.green, b.green, lastOdd.green)};
        storeChroma(cb, sums, rows.cb + x / 2);
        storeChroma(cr, sums, rows.cr + x / 2);
    }
    return x;
}

int convertVectors(const RowPair& rows, int begin, int end) {
    static const bool hasAVX2 = __builtin_cpu_supports("avx2") != 0;
    return hasAVX2 ? convertAVX2(rows, begin, end) : begin;
}

#else

int convertVectors(const RowPair&, int begin, int) { return begin; }

#endif

PixelBox grown(PixelBox box, PixelSize size) {
    const PixelBox inside = box.intersected({0, 0, size.width, size.height});
    if (inside.isEmpty()) return {};
    const int left = inside.x & ~1;
    const int top = inside.y & ~1;
    // The chroma sample right of an odd column sees it too.
    const int right = std::min((inside.right() + 2) & ~1, size.width);
    const int bottom = (inside.bottom() + 1) & ~1;
    return {left, top, right - left, bottom - top};
}

/// Chroma around grey, in units of 1/8, of the box's columns in one row; `row` has room for a column more on each side.
std::span<const int> chromaRow(PlaneView<const std::uint8_t> plane, int y, Subsampling subsampling, const PixelBox& box,
                               std::span<int> row) {
    constexpr int kGrey = 8 * 128;
    const auto width = static_cast<std::size_t>(box.width);
    switch (subsampling) {
    case Subsampling::None:
        std::ranges::transform(std::span(plane.row(y) + box.x, width), row.begin(),
                               [](std::uint8_t sample) { return 8 * sample - kGrey; });
        return row.first(width);
    case Subsampling::Quarter: {
        const std::uint8_t* near = plane.row(y / 2);
        const std::uint8_t* far = plane.row(std::clamp(y % 2 == 0 ? y / 2 - 1 : y / 2 + 1, 0, plane.height - 1));
        const int first = box.x / 2;
        for (int x = first; 2 * x < box.right(); ++x) {
            const int next = std::min(x + 1, plane.width - 1);
            const int here = 3 * near[x] + far[x];
            row[static_cast<std::size_t>(2 * (x - first))] = 2 * here - kGrey;
            row[static_cast<std::size_t>(2 * (x - first) + 1)] = here + 3 * near[next] + far[next] - kGrey;
        }
        return row.subspan(static_cast<std::size_t>(box.x % 2), width);
    }
    }
    return {};
}

/// One row of opaque pixels; the weights are those of BT.709's inverse in units of 2^-16, for chroma of 2^-13.
void pixelRow(const std::uint8_t* luma, std::span<const int> cb, std::span<const int> cr, std::uint8_t* pixels) {
    const auto clamped = [](int value) { return static_cast<std::uint32_t>(std::clamp(value >> 16, 0, 255)); };
    for (std::size_t x = 0; x < cb.size(); ++x) {
        const int grey = 76309 * (luma[x] - 16) + (1 << 15);
        const std::uint32_t blue = clamped(grey + 17305 * cb[x]);
        const std::uint32_t green = clamped(grey - 1747 * cb[x] - 4366 * cr[x]);
        const std::uint32_t red = clamped(grey + 14686 * cr[x]);
        const std::uint32_t pixel = blue | green << 8 | red << 16 | 0xFF000000;
        std::memcpy(pixels + 4 * x, &pixel, sizeof pixel);
    }
}

} // namespace

PixelBox convertToPicture(const ScreenPixels& pixels, PixelBox box, Picture& picture) {
    const PixelSize shared{std::min(pixels.size.width, picture.size().width) & ~1,
                           std::min(pixels.size.height, picture.size().height) & ~1};
    const PixelBox target = grown(box, shared);
    const auto luma = picture.plane(0);
    const auto cb = picture.plane(1);
    const auto cr = picture.plane(2);
    for (int y = target.y; y < target.bottom(); y += 2) {
        const RowPair rows{pixels.data + y * pixels.stride,
                           pixels.data + (y + 1) * pixels.stride,
                           luma.row(y),
                           luma.row(y + 1),
                           cb.row(y / 2),
                           cr.row(y / 2)};
        convertScalar(rows, convertVectors(rows, target.x, target.right()), target.right());
    }
    return target;
}

void convertToPixels(const Picture& picture, const PixelBox& box, std::uint8_t* pixels, std::ptrdiff_t stride) {
    std::vector<int> cb(static_cast<std::size_t>(box.width) + 2);
    std::vector<int> cr(cb.size());
    for (int y = box.y; y < box.bottom(); ++y)
        pixelRow(picture.plane(0).row(y) + box.x, chromaRow(picture.plane(1), y, picture.subsampling(), box, cb),
                 chromaRow(picture.plane(2), y, picture.subsampling(), box, cr), pixels + (y - box.y) * stride);
}

Image imageOf(const Picture& picture) {
    const PixelSize size = picture.size();
    const std::ptrdiff_t stride = 4 * static_cast<std::ptrdiff_t>(size.width);
    Image image{size, std::vector<std::uint8_t>(static_cast<std::size_t>(stride * size.height))};
    convertToPixels(picture, {0, 0, size.width, size.height}, image.pixels.data(), stride);
    return image;
}

} // namespace morvelin
