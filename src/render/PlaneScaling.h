// Scaling of a plane, box by box: rows of the source are scaled once, kept while they are needed, and mixed into rows
// of the output. Used by the layers of a compositor.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <span>
#include <vector>

#include "platform/Picture.h"
#include "render/ResamplingTaps.h"
#include "render/ScalingKernels.h"

namespace morvelin {

/// A plane of deep samples (8.7 fixed point).
class DeepPlane {
public:
    DeepPlane() = default;
    DeepPlane(int width, int height)
        : m_width(width),
          m_height(height),
          m_stride(width + kSpare),
          m_samples(static_cast<std::size_t>(m_stride) * static_cast<std::size_t>(height)) {}

    [[nodiscard]] int width() const { return m_width; }
    [[nodiscard]] int height() const { return m_height; }
    [[nodiscard]] std::int16_t* row(int y) { return m_samples.data() + static_cast<std::ptrdiff_t>(y) * m_stride; }
    [[nodiscard]] const std::int16_t* row(int y) const {
        return m_samples.data() + static_cast<std::ptrdiff_t>(y) * m_stride;
    }

private:
    static constexpr int kSpare = 16; ///< so that vector loops may load past a row's end

    int m_width = 0;
    int m_height = 0;
    int m_stride = 0;
    std::vector<std::int16_t> m_samples;
};

/// How a plane's samples lie among the pixels: sample `i` of an axis is centred on pixel coordinate
/// `origin + i * step` (0 is the picture's edge, 0.5 the first pixel's centre).
struct SampleGrid {
    double origin = 0.5;
    double step = 1;

    bool operator==(const SampleGrid&) const = default;
};

/// The grids of one plane, as pictures lay their samples.
struct PlaneGrid {
    SampleGrid x;
    SampleGrid y;
    int divisor = 1; ///< pixels per sample along each axis
};

[[nodiscard]] constexpr PlaneGrid planeGrid(int plane, Subsampling subsampling) {
    if (plane == 0 || subsampling == Subsampling::None) return {};
    return {{0.5, 2}, {1, 2}, 2};
}

/// The samples of a plane that hold the pixels of a box.
[[nodiscard]] inline PixelBox planeBox(const PixelBox& box, const PlaneGrid& grid) {
    const int d = grid.divisor;
    const int right = (box.right() + d - 1) / d;
    const int bottom = (box.bottom() + d - 1) / d;
    return {box.x / d, box.y / d, right - box.x / d, bottom - box.y / d};
}

/// Where samples of an output show samples of a source, given that source pixel `p` lies at output pixel
/// `offset + p * scale`.
[[nodiscard]] constexpr AxisMapping axisMapping(const SampleGrid& output, const SampleGrid& source, double offset,
                                                double scale) {
    const double step = output.step / (scale * source.step);
    return {((output.origin - offset) / scale - source.origin) / source.step, step};
}

/// How a whole plane is scaled.
struct PlaneTaps {
    RowTaps x;
    AxisTaps y;
};

/// Room for rows between two steps of a scaling; kept by its owner from one box to the next.
struct ScalingScratch {
    std::vector<std::int16_t> rows;
    std::vector<const std::int16_t*> pointers;
};

/// Makes the rows of one box, which are asked for from the top down. `Plane` gives rows of 8-bit or deep samples.
template <class Plane>
class RowScaler {
public:
    RowScaler(const PlaneTaps& taps, const Plane& source, const PixelBox& box, ScalingScratch& scratch)
        : m_taps(taps),
          m_source(source),
          m_scratch(scratch),
          m_capacity(static_cast<int>(std::bit_ceil(static_cast<unsigned>(taps.y.taps + kBatch)))) {
        const int left = box.x - taps.x.axis.first;
        m_firstGroup = left / RowTaps::kGroup;
        m_endGroup = (left + box.width + RowTaps::kGroup - 1) / RowTaps::kGroup;
        m_skipped = left - m_firstGroup * RowTaps::kGroup;
        // Column loops round the box's width up from wherever it begins.
        m_stride = (m_endGroup - m_firstGroup + 1) * RowTaps::kGroup;
        m_limit = std::min(firstRow(box.bottom() - 1) + taps.y.taps, taps.y.sourceLength);
        constexpr auto kSampleSize = static_cast<std::ptrdiff_t>(sizeof(*source.row(0)));
        m_firstByte = taps.x.axis.source[static_cast<std::size_t>(left)] * kSampleSize;
        m_endByte = (taps.x.axis.source[static_cast<std::size_t>(left + box.width - 1)] + taps.x.axis.taps) *
                    kSampleSize;
        m_scratch.rows.resize(static_cast<std::size_t>(m_stride) * static_cast<std::size_t>(m_capacity));
        m_scratch.pointers.resize(static_cast<std::size_t>(taps.y.taps));
    }

    /// The rows that make output row `y`, from the box's left edge on. Valid until the next call.
    [[nodiscard]] ColumnTaps row(int y) {
        const int first = firstRow(y);
        const int end = std::min(first + m_taps.y.taps, m_taps.y.sourceLength);
        m_next = std::max(m_next, first);
        while (m_next < end) scaleBatch();
        for (int tap = 0; tap < m_taps.y.taps; ++tap)
            m_scratch.pointers[static_cast<std::size_t>(tap)] = slot(std::min(first + tap, end - 1));
        return {m_scratch.pointers.data(), m_taps.y.weightsOf(y - m_taps.y.first), m_taps.y.taps, m_skipped};
    }

private:
    static constexpr int kBatch = 4;
    static constexpr std::ptrdiff_t kCacheLine = 64;

    int firstRow(int y) const { return m_taps.y.source[static_cast<std::size_t>(y - m_taps.y.first)]; }
    std::int16_t* slot(int sourceRow) {
        return m_scratch.rows.data() + static_cast<std::ptrdiff_t>(sourceRow & (m_capacity - 1)) * m_stride;
    }

    void scaleBatch() {
        using Row = decltype(m_source.row(0));
        std::array<Row, kBatch> from{};
        std::array<std::int16_t*, kBatch> to{};
        const int count = std::min(kBatch, m_limit - m_next);
        for (int i = 0; i < count; ++i) {
            from[static_cast<std::size_t>(i)] = m_source.row(m_next + i);
            to[static_cast<std::size_t>(i)] = slot(m_next + i);
        }
        scaleRows(from.data(), to.data(), count);
        m_next += count;
        fetchAhead();
    }
    /// The rows of the next batch, asked for while this one's are mixed: the processor's own guess fails at each row.
    void fetchAhead() const {
        const int end = std::min(m_next + kBatch, m_limit);
        for (int y = m_next; y < end; ++y) {
            const auto* row = reinterpret_cast<const char*>(m_source.row(y));
            for (std::ptrdiff_t byte = m_firstByte; byte < m_endByte; byte += kCacheLine)
                __builtin_prefetch(row + byte);
        }
    }
    void scaleRows(const std::uint8_t* const* from, std::int16_t* const* to, int count) const {
        scalingKernels().rows(m_taps.x, m_firstGroup, m_endGroup, from, to, count);
    }
    void scaleRows(const std::int16_t* const* from, std::int16_t* const* to, int count) const {
        scalingKernels().deepRows(m_taps.x, m_firstGroup, m_endGroup, from, to, count);
    }

    const PlaneTaps& m_taps;
    const Plane& m_source;
    ScalingScratch& m_scratch;
    int m_capacity = 0; ///< rows that are kept: a power of two
    int m_firstGroup = 0;
    int m_endGroup = 0;
    int m_skipped = 0; ///< samples of the first group left of the box
    int m_stride = 0;
    int m_limit = 0;                ///< source rows from here on are not needed
    int m_next = 0;                 ///< the next source row to scale
    std::ptrdiff_t m_firstByte = 0; ///< of a source row, that is read
    std::ptrdiff_t m_endByte = 0;
};

} // namespace morvelin
