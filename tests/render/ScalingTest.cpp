// Weights, loops and places of the scaling.

#include <numeric>
#include <random>

#include <gtest/gtest.h>

#include "CompositorScenes.h"
#include "render/BlueNoise.h"
#include "render/Compositor.h"
#include "render/PlaneScaling.h"
#include "timeline/ClampCenter.h"

namespace morvelin {
namespace {

using namespace test;

TEST(Scaling, WeightsSumToOneAndStayInsideTheSource) {
    std::vector<PhaseTable> tables{catmullRomPhases(), catmullRomPhases(2.7)};
    for (const double step : {0.01, 0.6, 1.0, 1.11, 3.3, 700.0}) tables.push_back(lanczosPhases(step));
    for (const double sigma : {1e-300, 0.3, 1.2, 4.0, 77.0, 20000.0}) tables.push_back(gaussianPhases(sigma, 1.1));
    for (const PhaseTable& table : tables) {
        for (const int length : {1, 2, 3, 40, 1000}) {
            const AxisTaps axis = axisTaps(table, {-7.3, length / 60.0 + 0.1}, -3, 70, length);
            ASSERT_EQ(axis.taps % 2, 0);
            for (int entry = 0; entry < axis.count; ++entry) {
                const std::int16_t* weights = axis.weightsOf(entry);
                ASSERT_EQ(std::accumulate(weights, weights + axis.taps, 0), kWeightOne);
                const int first = axis.source[static_cast<std::size_t>(entry)];
                ASSERT_GE(first, 0);
                for (int tap = std::max(0, length - first); tap < axis.taps; ++tap) ASSERT_EQ(weights[tap], 0);
            }
        }
    }
}

TEST(Scaling, WhereNothingIsScaledNothingChanges) {
    const AxisTaps axis = axisTaps(lanczosPhases(1), {5, 1}, 0, 20, 40);
    for (int entry = 0; entry < axis.count; ++entry)
        for (int tap = 0; tap < axis.taps; ++tap)
            EXPECT_EQ(axis.weightsOf(entry)[tap],
                      axis.source[static_cast<std::size_t>(entry)] + tap == entry + 5 ? kWeightOne : 0);
}

/// Rows of random samples with room to spare.
template <class Sample>
struct RandomRows {
    std::vector<std::vector<Sample>> rows;
    std::vector<const Sample*> pointers;

    RandomRows(int count, int length, int limit, std::mt19937& random) {
        for (int i = 0; i < count; ++i) {
            rows.emplace_back(static_cast<std::size_t>(length + 64));
            for (Sample& sample : rows.back()) sample = static_cast<Sample>(random() % static_cast<unsigned>(limit));
        }
        for (const auto& row : rows) pointers.push_back(row.data());
    }
};

template <class Sample, class Loop>
void expectEqualRows(const ScalingKernels& vectors, SampleWidth width, Loop ScalingKernels::*loop, int limit) {
    std::mt19937 random(5);
    for (const double step : {0.02, 0.4, 0.93, 1.0, 1.3, 2.2, 9.0}) {
        if (width == SampleWidth::Deep && step > 1) continue;
        const PhaseTable phases = width == SampleWidth::Deep ? catmullRomPhases() : lanczosPhases(step);
        const RowTaps taps = rowTaps(axisTaps(phases, {-4, step}, 0, 203, 190), width);
        const RandomRows<Sample> source(5, 190, limit, random);
        std::vector<std::vector<std::int16_t>> plain(5, std::vector<std::int16_t>(256)), vector = plain;
        const auto pointersTo = [](auto& rows) {
            std::vector<std::int16_t*> pointers;
            for (auto& row : rows) pointers.push_back(row.data());
            return pointers;
        };
        (plainScalingKernels().*loop)(taps, 1, taps.groups, source.pointers.data(), pointersTo(plain).data(), 5);
        (vectors.*loop)(taps, 1, taps.groups, source.pointers.data(), pointersTo(vector).data(), 5);
        for (std::size_t row = 0; row < 5; ++row)
            for (std::size_t x = 0; x < 203 - 16; ++x) ASSERT_EQ(plain[row][x], vector[row][x]) << step << " at " << x;
    }
}

void expectSameBitsAsPlain(const ScalingKernels& vector) {
    expectEqualRows<std::uint8_t>(vector, SampleWidth::Byte, &ScalingKernels::rows, 256);
    expectEqualRows<std::int16_t>(vector, SampleWidth::Deep, &ScalingKernels::deepRows, 32640);

    std::mt19937 random(9);
    const ScalingKernels& plain = plainScalingKernels();
    for (const int taps : {2, 4, 6, 8, 10, 34}) {
        const RandomRows<std::int16_t> rows(taps, 130, 16320, random);
        std::vector<std::int16_t> weights(static_cast<std::size_t>(taps));
        for (auto& weight : weights) weight = static_cast<std::int16_t>(static_cast<int>(random() % 9000) - 2500);
        const ColumnTaps columns{rows.pointers.data(), weights.data(), taps, 3};
        const DitherRow dither = BlueNoise::tile().ditherRow(29, 11);
        for (const int count : {1, 16, 47, 120}) {
            std::vector<std::uint8_t> a(160, 7), b = a;
            plain.columns(columns, count, {16, 235}, a.data());
            vector.columns(columns, count, {16, 235}, b.data());
            EXPECT_EQ(a, b) << "also: nothing is written past the end";
            plain.ditheredColumns(columns, count, dither, a.data());
            vector.ditheredColumns(columns, count, dither, b.data());
            EXPECT_EQ(a, b);
            std::vector<std::int16_t> c(160), d(160);
            plain.deepColumns(columns, count, kRowBits, c.data());
            vector.deepColumns(columns, count, kRowBits, d.data());
            EXPECT_TRUE(std::equal(c.begin(), c.begin() + count, d.begin()));
        }
    }
}

TEST(Scaling, VectorLoopsGiveTheSameBitsAsPlainOnes) {
    if (avx2ScalingKernels() == nullptr) GTEST_SKIP() << "this processor has no vectors";
    expectSameBitsAsPlain(*avx2ScalingKernels());
    if (avx512ScalingKernels() != nullptr) expectSameBitsAsPlain(*avx512ScalingKernels());
}

TEST(Scaling, DitherKeepsTheMeanOfAFlatGrey) {
    for (const int fraction : {0, 1, 40, 64, 127}) {
        const std::vector<std::int16_t> row(64 + 16, static_cast<std::int16_t>(100 * (1 << kDeepBits) + fraction));
        const std::int16_t* const rows[] = {row.data(), row.data()};
        const std::int16_t weights[] = {kWeightOne, 0};
        double sum = 0;
        for (int y = 0; y < BlueNoise::kSide; ++y) {
            std::uint8_t out[64];
            scalingKernels().ditheredColumns({rows, weights, 2, 0}, 64, BlueNoise::tile().ditherRow(0, y), out);
            for (const std::uint8_t sample : out) {
                ASSERT_TRUE(sample == 100 || sample == 101);
                sum += sample;
            }
        }
        EXPECT_NEAR(sum / 4096, 100 + fraction / 128.0, 0.005);
    }
}

TEST(Scaling, EveryRankOfTheNoiseComesOnce) {
    std::vector<int> times(4096);
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x) ++times[static_cast<std::size_t>(BlueNoise::tile().rank(x, y))];
    EXPECT_EQ(std::ranges::count(times, 1), 4096);
}

/// The middle of the bright dot around a place, weighed by brightness.
NormalizedPoint dotNear(const Picture& picture, const NormalizedPoint& place) {
    double sum = 0, sumX = 0, sumY = 0;
    const int cx = static_cast<int>(place.x), cy = static_cast<int>(place.y);
    for (int y = cy - 14; y <= cy + 14; ++y) {
        for (int x = cx - 14; x <= cx + 14; ++x) {
            const double light = picture.plane(0).row(y)[x] - 40.0;
            sum += light;
            sumX += light * (x + 0.5);
            sumY += light * (y + 0.5);
        }
    }
    return {sumX / sum, sumY / sum};
}

TEST(Scaling, APanInASlowRampIsSmooth) {
    constexpr PixelSize kSize{640, 360};
    auto picture = std::make_shared<Picture>(kSize, Subsampling::Quarter);
    for (int p = 0; p < 3; ++p)
        for (int y = 0; y < picture->plane(p).height; ++y)
            std::fill_n(picture->plane(p).row(y), picture->plane(p).width, p == 0 ? 40 : 128);
    std::vector<NormalizedPoint> dots; // 4 by 4 pixels each, in a grid
    for (int y = 80; y <= 200; y += 60) {
        for (int x = 120; x <= 320; x += 50) {
            for (int row = -2; row < 2; ++row) std::fill_n(picture->plane(0).row(y + row) + x - 2, 4, 200);
            dots.push_back({x / 640.0, y / 360.0});
        }
    }
    auto instruction = plainInstruction(kSize, kSize);
    instruction->padding = 0.05;
    instruction->denseFrames = {{EditTime(0), 1, 0.5, 0.5}, {EditTime(20), 1.5, 0.3, 0.35}};
    Compositor compositor(instruction, Subsampling::Quarter);
    for (int frame = 0; frame < 150; ++frame) {
        const DenseZoomFrame camera = sampleDenseFrames(instruction->denseFrames, EditTime(frame / 10.0));
        const FramePlan plan = framePlan(*instruction, camera.time, {0});
        const Picture& drawn = compositor.compose(plan, shown(picture, 0)).picture;
        // Where the dots must be by the camera's unrounded curve.
        const double zoom = std::max(1.0, camera.zoom);
        const NormalizedPoint center = clampCenter({camera.centerX, camera.centerY}, camera.zoom, 0.05);
        const Rectangle video = plan.stage.videoRect;
        const double panX = std::clamp(video.x + center.x * video.width - 320 / zoom, 0.0, 640 - 640 / zoom);
        const double panY = std::clamp(video.y + center.y * video.height - 180 / zoom, 0.0, 360 - 360 / zoom);
        for (const NormalizedPoint& dot : dots) {
            const NormalizedPoint found = dotNear(drawn, plan.stage.outputPoint(dot.x, dot.y));
            EXPECT_NEAR(found.x, (video.x + dot.x * video.width - panX) * zoom, 0.05) << frame;
            EXPECT_NEAR(found.y, (video.y + dot.y * video.height - panY) * zoom, 0.05) << frame;
        }
    }
}

} // namespace
} // namespace morvelin
