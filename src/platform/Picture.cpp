#include "platform/Picture.h"

#include <cstdlib>
#include <new>

namespace morvelin {

namespace {

constexpr std::ptrdiff_t kAlignment = 64;

constexpr std::ptrdiff_t aligned(std::ptrdiff_t size) { return (size + kAlignment - 1) / kAlignment * kAlignment; }

} // namespace

Picture::Picture(PixelSize size, Subsampling subsampling) : m_size(size), m_subsampling(subsampling) {
    const int divisor = subsampling == Subsampling::Quarter ? 2 : 1;
    std::ptrdiff_t total = 0;
    for (std::size_t index = 0; index < m_layout.size(); ++index) {
        Layout& layout = m_layout[index];
        layout.width = index == 0 ? size.width : (size.width + divisor - 1) / divisor;
        layout.height = index == 0 ? size.height : (size.height + divisor - 1) / divisor;
        // One spare block behind each row lets kernels load whole vectors at its end.
        layout.stride = aligned(layout.width + kAlignment / 2);
        layout.offset = total;
        total += layout.stride * layout.height;
    }
    auto* samples = static_cast<std::uint8_t*>(
        std::aligned_alloc(static_cast<std::size_t>(kAlignment), static_cast<std::size_t>(total + kAlignment)));
    if (samples == nullptr) throw std::bad_alloc();
    m_samples.reset(samples);
}

void Picture::FreeAligned::operator()(std::uint8_t* samples) const { std::free(samples); }

} // namespace morvelin
