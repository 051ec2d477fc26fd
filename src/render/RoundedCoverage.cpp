#include "render/RoundedCoverage.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace morvelin {

namespace {

/// Slices of a pixel row whose ends are exact: an arc's error stays below a thousandth of a pixel.
constexpr int kSlices = 16;

/// The inside of one slice.
struct Slice {
    double left;
    double right;
};

/// How far the rounding moves the sides in at a height.
double inset(const RoundedRectangle& shape, double y) {
    const double intoCorner = std::max(shape.rect.y + shape.radius - y, y - (shape.rect.bottom() - shape.radius));
    if (intoCorner <= 0) return 0;
    const double d = std::min(intoCorner, shape.radius);
    return shape.radius - std::sqrt(shape.radius * shape.radius - d * d);
}

std::uint16_t weightOf(double share) {
    return static_cast<std::uint16_t>(std::lround(std::clamp(share, 0.0, 1.0) * kCovered));
}

int limited(double value, int width) { return static_cast<int>(std::clamp(value, 0.0, static_cast<double>(width))); }

std::uint16_t pixelWeight(const std::array<Slice, kSlices>& slices, double height, int x) {
    double sum = 0;
    for (const Slice& slice : slices)
        sum += std::max(0.0, std::min(slice.right, x + 1.0) - std::max(slice.left, static_cast<double>(x)));
    return weightOf(sum * height / kSlices);
}

void clear(CoverageRow& row) {
    row.begin = row.innerBegin = row.innerEnd = row.end = 0;
    row.innerWeight = 0;
    row.left.clear();
    row.right.clear();
}

void blend(const std::uint8_t* above, const std::uint16_t* weights, int count, std::uint8_t* below) {
    for (int x = 0; x < count; ++x) {
        const int difference = (above[x] - below[x]) * weights[x];
        below[x] = static_cast<std::uint8_t>(below[x] + ((difference + kCovered / 2) >> 15));
    }
}

void blendEvenly(const std::uint8_t* above, int weight, int count, std::uint8_t* below) {
    for (int x = 0; x < count; ++x) {
        const int difference = (above[x] - below[x]) * weight;
        below[x] = static_cast<std::uint8_t>(below[x] + ((difference + kCovered / 2) >> 15));
    }
}

} // namespace

int CoverageRow::weightAt(int x) const {
    if (x < begin || x >= end) return 0;
    if (x < innerBegin) return left[static_cast<std::size_t>(x - begin)];
    if (x < innerEnd) return innerWeight;
    return right[static_cast<std::size_t>(x - innerEnd)];
}

Coverage::Coverage(const RoundedRectangle& shape, int pictureWidth, int divisor)
    : m_shape(shape),
      m_width(pictureWidth),
      m_divisor(divisor) {
    m_shape.radius = std::clamp(m_shape.radius, 0.0, std::max(m_shape.rect.smallerSide(), 0.0) / 2);
}

bool Coverage::isStraight(int y) const {
    return y * m_divisor >= m_shape.rect.y + m_shape.radius &&
           (y + 1) * m_divisor <= m_shape.rect.bottom() - m_shape.radius;
}

const CoverageRow& Coverage::row(int y) {
    if (!isStraight(y)) {
        sampleRow(y, m_row);
        return m_row;
    }
    if (!m_hasStraightRow) {
        sampleRow(y, m_straightRow);
        m_hasStraightRow = true;
    }
    return m_straightRow;
}

void Coverage::pixelRow(int y, CoverageRow& row) const {
    clear(row);
    const double top = std::max(static_cast<double>(y), m_shape.rect.y);
    const double height = std::min(y + 1.0, m_shape.rect.bottom()) - top;
    if (!(height > 0) || !(m_shape.rect.width > 0)) return;

    std::array<Slice, kSlices> slices;
    double innerLeft = m_shape.rect.x;
    double innerRight = m_shape.rect.right();
    double outerLeft = innerRight;
    double outerRight = innerLeft;
    for (int i = 0; i < kSlices; ++i) {
        const double in = inset(m_shape, top + (i + 0.5) * height / kSlices);
        const Slice slice{m_shape.rect.x + in, m_shape.rect.right() - in};
        slices[static_cast<std::size_t>(i)] = slice;
        innerLeft = std::max(innerLeft, slice.left);
        innerRight = std::min(innerRight, slice.right);
        outerLeft = std::min(outerLeft, slice.left);
        outerRight = std::max(outerRight, slice.right);
    }
    row.begin = limited(std::floor(outerLeft), m_width);
    row.end = std::max(row.begin, limited(std::ceil(outerRight), m_width));
    row.innerBegin = std::clamp(limited(std::ceil(innerLeft), m_width), row.begin, row.end);
    row.innerEnd = std::clamp(limited(std::floor(innerRight), m_width), row.innerBegin, row.end);
    row.innerWeight = weightOf(height);
    for (int x = row.begin; x < row.innerBegin; ++x) row.left.push_back(pixelWeight(slices, height, x));
    for (int x = row.innerEnd; x < row.end; ++x) row.right.push_back(pixelWeight(slices, height, x));
}

void Coverage::sampleRow(int y, CoverageRow& row) {
    if (m_divisor == 1) {
        pixelRow(y, row);
        return;
    }
    clear(row);
    pixelRow(2 * y, m_upper);
    pixelRow(2 * y + 1, m_lower);
    const int samples = (m_width + 1) / 2;
    const bool hasUpper = m_upper.begin < m_upper.end;
    const bool hasLower = m_lower.begin < m_lower.end;
    if (!hasUpper && !hasLower) return;

    const int begin = std::min(hasUpper ? m_upper.begin : m_width, hasLower ? m_lower.begin : m_width);
    const int end = std::max(m_upper.end, m_lower.end);
    row.begin = begin / 2;
    row.end = std::min(samples, end / 2 + 1);
    // Past the picture's sides its end pixels repeat.
    const auto edge = [&](int x) { return std::clamp(x, 0, m_width - 1); };
    const auto weight = [&](int sample) {
        const int x = 2 * sample;
        int sum = 0;
        for (const CoverageRow* pixels : {&m_upper, &m_lower})
            sum += pixels->weightAt(edge(x - 1)) + 2 * pixels->weightAt(edge(x)) + pixels->weightAt(edge(x + 1));
        return static_cast<std::uint16_t>((sum + 4) / 8);
    };
    const int inner0 = std::max(m_upper.innerBegin, m_lower.innerBegin);
    const int inner1 = std::min(m_upper.innerEnd, m_lower.innerEnd);
    row.innerBegin = std::clamp(inner0 == 0 ? 0 : inner0 / 2 + 1, row.begin, row.end);
    row.innerEnd = std::clamp(inner1 == m_width ? samples : (inner1 - 1) / 2, row.innerBegin, row.end);
    row.innerWeight = static_cast<std::uint16_t>((m_upper.innerWeight + m_lower.innerWeight + 1) / 2);
    for (int x = row.begin; x < row.innerBegin; ++x) row.left.push_back(weight(x));
    for (int x = row.innerEnd; x < row.end; ++x) row.right.push_back(weight(x));
}

void blendCovered(const CoverageRow& coverage, int x0, int x1, const std::uint8_t* above, std::uint8_t* below) {
    const auto part = [&](int begin, int end, const auto& mix) {
        begin = std::max(begin, x0);
        end = std::min(end, x1);
        if (begin < end) mix(begin, end - begin);
    };
    part(coverage.begin, coverage.innerBegin, [&](int x, int count) {
        blend(above + (x - x0), coverage.left.data() + (x - coverage.begin), count, below + (x - x0));
    });
    part(coverage.innerBegin, coverage.innerEnd, [&](int x, int count) {
        if (coverage.innerWeight == kCovered)
            std::memcpy(below + (x - x0), above + (x - x0), static_cast<std::size_t>(count));
        else
            blendEvenly(above + (x - x0), coverage.innerWeight, count, below + (x - x0));
    });
    part(coverage.innerEnd, coverage.end, [&](int x, int count) {
        blend(above + (x - x0), coverage.right.data() + (x - coverage.innerEnd), count, below + (x - x0));
    });
}

} // namespace morvelin
