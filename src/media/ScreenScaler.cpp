#include "media/ScreenScaler.h"

#include <array>
#include <cmath>

namespace morvelin {

namespace {

constexpr int kBytesPerPixel = 4;

/// The pixels of the smaller axis that see any of `start` to `end` of the larger one.
std::pair<int, int> touched(int start, int end, int from, int to) {
    const double scale = static_cast<double>(to) / from;
    return {static_cast<int>(std::floor(start * scale)), std::min(static_cast<int>(std::ceil(end * scale)), to)};
}

} // namespace

ScreenScaler::ScreenScaler(PixelSize from, PixelSize to)
    : m_from(from),
      m_to(to),
      m_columns(spans(from.width, to.width)),
      m_rows(spans(from.height, to.height)),
      m_pixels(static_cast<std::size_t>(to.width) * static_cast<std::size_t>(to.height) * kBytesPerPixel) {}

std::vector<ScreenScaler::Span> ScreenScaler::spans(int from, int to) {
    const double ratio = static_cast<double>(from) / to;
    std::vector<Span> spans;
    for (int index = 0; index < to; ++index) {
        const double start = index * ratio;
        const double end = (index + 1) * ratio;
        Span span;
        span.first = static_cast<int>(start);
        span.last = std::clamp(static_cast<int>(std::ceil(end)) - 1, span.first, from - 1);
        span.firstWeight = static_cast<float>(std::min(span.first + 1.0, end) - start);
        span.lastWeight = static_cast<float>(end - span.last);
        spans.push_back(span);
    }
    return spans;
}

PixelBox ScreenScaler::update(const ScreenPixels& source, const PixelBox& box) {
    const auto [left, right] = touched(box.x, box.right(), m_from.width, m_to.width);
    const auto [top, bottom] = touched(box.y, box.bottom(), m_from.height, m_to.height);
    for (int y = top; y < bottom; ++y)
        for (int x = left; x < right; ++x) average(source, x, y);
    return {left, top, right - left, bottom - top};
}

void ScreenScaler::average(const ScreenPixels& source, int x, int y) {
    const Span& columns = m_columns[static_cast<std::size_t>(x)];
    const Span& rows = m_rows[static_cast<std::size_t>(y)];
    std::array<float, 3> sum{};
    float area = 0;
    for (int row = rows.first; row <= rows.last; ++row) {
        const std::uint8_t* pixel = source.data + row * source.stride + std::ptrdiff_t{columns.first} * kBytesPerPixel;
        for (int column = columns.first; column <= columns.last; ++column, pixel += kBytesPerPixel) {
            const float weight = rows.weight(row) * columns.weight(column);
            for (std::size_t channel = 0; channel < sum.size(); ++channel) sum[channel] += weight * pixel[channel];
            area += weight;
        }
    }
    std::uint8_t* target =
        &m_pixels[(static_cast<std::size_t>(y) * static_cast<std::size_t>(m_to.width) + static_cast<std::size_t>(x)) *
                  kBytesPerPixel];
    for (std::size_t channel = 0; channel < sum.size(); ++channel)
        target[channel] = static_cast<std::uint8_t>(std::lround(sum[channel] / area));
}

ScreenPixels ScreenScaler::pixels() const {
    return {m_pixels.data(), std::ptrdiff_t{m_to.width} * kBytesPerPixel, m_to};
}

} // namespace morvelin
