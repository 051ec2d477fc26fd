#include "platform/Picture.h"

#include <cstdlib>
#include <new>
#include <utility>

namespace morvelin {

namespace {

constexpr std::ptrdiff_t kAlignment = 64;

constexpr std::ptrdiff_t aligned(std::ptrdiff_t size) { return (size + kAlignment - 1) / kAlignment * kAlignment; }

} // namespace

Picture::Picture(PixelSize size, Subsampling subsampling) : m_size(size), m_subsampling(subsampling) {
    const int divisor = subsampling == Subsampling::Quarter ? 2 : 1;
    std::array<std::ptrdiff_t, 3> offsets{};
    std::ptrdiff_t total = 0;
    for (std::size_t index = 0; index < m_planes.size(); ++index) {
        PlaneView<std::uint8_t>& plane = m_planes[index];
        plane.width = index == 0 ? size.width : (size.width + divisor - 1) / divisor;
        plane.height = index == 0 ? size.height : (size.height + divisor - 1) / divisor;
        // One spare block behind each row lets kernels load whole vectors at its end.
        plane.stride = aligned(plane.width + kAlignment / 2);
        offsets[index] = total;
        total += plane.stride * plane.height;
    }
    auto* samples = static_cast<std::uint8_t*>(
        std::aligned_alloc(static_cast<std::size_t>(kAlignment), static_cast<std::size_t>(total + kAlignment)));
    if (samples == nullptr) throw std::bad_alloc();
    m_owner.reset(samples, &std::free);
    for (std::size_t index = 0; index < m_planes.size(); ++index) m_planes[index].data = samples + offsets[index];
}

Picture::Picture(PixelSize size, Subsampling subsampling, const std::array<PlaneView<std::uint8_t>, 3>& planes,
                 std::shared_ptr<void> owner)
    : m_size(size),
      m_subsampling(subsampling),
      m_planes(planes),
      m_owner(std::move(owner)) {}

} // namespace morvelin
