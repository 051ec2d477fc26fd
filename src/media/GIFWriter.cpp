#include "media/GIFWriter.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "media/ColorConversion.h"

namespace morvelin {

namespace {

constexpr std::size_t kLongestStretch = 48;
constexpr std::size_t kLargestStretch = 32 << 20; ///< bytes of changed pixels
/// Every so many changed pixels one is looked at to choose colours. Odd, so that it is not always the same columns.
constexpr std::int64_t kSampling = 5;
/// Colours of the stretch before are kept while their mean squared error is no larger than this multiple of what fresh
/// colours have, and this much: fresh ones must be sent with each frame.
constexpr double kWorseIsKept = 1.3;
constexpr double kErrorIsKept = 6;

double squaredDistance(PixelColor a, PixelColor b) {
    double sum = 0;
    for (int channel = 0; channel < 3; ++channel) {
        const double distance = channelOf(a, channel) - channelOf(b, channel);
        sum += distance * distance;
    }
    return sum;
}

double meanSquaredError(const std::vector<FrameChange>& frames, NearestColor& nearest) {
    double sum = 0;
    double count = 0;
    for (const FrameChange& frame : frames)
        for (std::size_t i = 0; i < frame.pixels.size(); i += kSampling) {
            const PixelColor pixel = frame.pixels[i];
            if (pixel == 0) continue;
            const std::uint8_t number = nearest(channelOf(pixel, 0), channelOf(pixel, 1), channelOf(pixel, 2));
            sum += squaredDistance(pixel, nearest.palette().colors[number]);
            ++count;
        }
    return count > 0 ? sum / count : 0;
}

} // namespace

Result<std::unique_ptr<GIFWriter>, int> GIFWriter::create(const std::filesystem::path& path, PixelSize size,
                                                          double frameRate) {
    auto file = GIFFile::create(path, size);
    if (!file) return failure(file.error());
    return std::unique_ptr<GIFWriter>(new GIFWriter(std::move(*file), size, frameRate));
}

GIFWriter::GIFWriter(GIFFile file, PixelSize size, double frameRate)
    : m_size(size),
      m_frameRate(frameRate),
      m_before(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height)),
      m_picture(m_before.size()),
      m_file(std::move(file)),
      m_dithering(size) {}

Result<void, int> GIFWriter::append(const Picture& picture, std::span<const PixelBox> changed) {
    const PixelBox everything{0, 0, m_size.width, m_size.height};
    m_stretch.frames.push_back(std::exchange(m_isFirst, false) ? take(picture, {&everything, 1})
                                                               : take(picture, changed));
    m_stretch.bytes += m_stretch.frames.back().pixels.size() * sizeof(PixelColor);
    if (m_stretch.frames.size() < kLongestStretch && m_stretch.bytes < kLargestStretch) return {};
    return hand(std::exchange(m_stretch, {}));
}

Result<void, int> GIFWriter::finish() {
    if (!m_stretch.frames.empty())
        if (auto handed = hand(std::exchange(m_stretch, {})); !handed) return handed;
    if (auto drawn = awaited(); !drawn) return drawn;
    return m_file.finish();
}

std::span<PixelColor> GIFWriter::row(std::vector<PixelColor>& picture, const PixelBox& box, int y) const {
    const std::size_t begin = static_cast<std::size_t>(y) * static_cast<std::size_t>(m_size.width) +
                              static_cast<std::size_t>(box.x);
    return std::span(picture).subspan(begin, static_cast<std::size_t>(box.width));
}

PixelBox GIFWriter::differingBox(std::span<const PixelBox> changed) const {
    PixelBox differing;
    for (const PixelBox& box : changed)
        for (int y = box.y; y < box.bottom(); ++y) {
            const auto begin = static_cast<std::ptrdiff_t>(y) * m_size.width;
            const auto from = m_before.begin() + begin + box.x;
            const auto to = m_before.begin() + begin + box.right();
            const auto first = std::mismatch(from, to, m_picture.begin() + begin + box.x).first;
            if (first == to) continue;
            const auto last = std::mismatch(std::reverse_iterator(to), std::reverse_iterator(first),
                                            std::reverse_iterator(m_picture.begin() + begin + box.right()))
                                  .first.base();
            differing = differing.united(
                {static_cast<int>(first - m_before.begin() - begin), y, static_cast<int>(last - first), 1});
        }
    return differing;
}

FrameChange GIFWriter::take(const Picture& picture, std::span<const PixelBox> changed) {
    for (const PixelBox& box : changed)
        convertToPixels(picture, box, reinterpret_cast<std::uint8_t*>(m_picture.data() + box.y * m_size.width + box.x),
                        m_size.width * static_cast<std::ptrdiff_t>(sizeof(PixelColor)));
    FrameChange change{differingBox(changed), {}};
    const PixelBox& box = change.box;
    change.pixels.reserve(static_cast<std::size_t>(box.width) * static_cast<std::size_t>(box.height));
    for (int y = box.y; y < box.bottom(); ++y) {
        const auto now = row(m_picture, box, y);
        const auto before = row(m_before, box, y);
        for (std::size_t x = 0; x < now.size(); ++x) {
            const bool differs = now[x] != before[x];
            change.pixels.push_back(differs ? now[x] : 0);
            if (differs && ++m_pixelsSeen % kSampling == 0) m_stretch.colors.add(now[x]);
        }
        std::ranges::copy(now, before.begin());
    }
    return change;
}

Result<void, int> GIFWriter::awaited() { return m_drawing.valid() ? m_drawing.get() : Result<void, int>(); }

Result<void, int> GIFWriter::hand(Stretch stretch) {
    if (auto drawn = awaited(); !drawn) return drawn;
    m_drawing = std::async(std::launch::async,
                           [this, handed = std::move(stretch)]() mutable { return draw(std::move(handed)); });
    return {};
}

Result<void, int> GIFWriter::draw(Stretch stretch) {
    if (auto chosen = choosePalette(stretch); !chosen) return chosen;
    for (const FrameChange& frame : stretch.frames) {
        if (auto written = m_file.append(m_dithering.draw(frame, *m_nearest), delay(m_drawnFrames)); !written)
            return written;
        ++m_drawnFrames;
    }
    return {};
}

Result<void, int> GIFWriter::choosePalette(Stretch& stretch) {
    // A first picture of a few pixels may have been stepped over.
    if (!m_nearest && stretch.colors.isEmpty()) stretch.colors.add(stretch.frames.front().pixels.front());
    if (stretch.colors.isEmpty()) return {};
    const auto palette = stretch.colors.palette();
    if (!palette) return failure(palette.error());
    NearestColor fresh(*palette);
    if (m_nearest && meanSquaredError(stretch.frames, *m_nearest) <=
                         kWorseIsKept * meanSquaredError(stretch.frames, fresh) + kErrorIsKept)
        return {};
    m_file.setPalette(*palette);
    m_nearest = std::move(fresh);
    return {};
}

int GIFWriter::delay(std::int64_t frame) const {
    // Each frame starts at its exact time, rounded; so the error never adds up.
    const auto hundredths = [this](std::int64_t number) {
        return std::llround(100 * static_cast<double>(number) / m_frameRate);
    };
    return static_cast<int>(hundredths(frame + 1) - hundredths(frame));
}

} // namespace morvelin
