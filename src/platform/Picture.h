// Pictures as they travel between screen, encoder, decoder and compositor.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace morvelin {

struct PixelSize {
    int width = 0;
    int height = 0;

    bool operator==(const PixelSize&) const = default;
};

/// A box of pixels: left, top, width, height; origin top-left.
struct PixelBox {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool operator==(const PixelBox&) const = default;
    [[nodiscard]] int right() const { return x + width; }
    [[nodiscard]] int bottom() const { return y + height; }
    [[nodiscard]] bool isEmpty() const { return width <= 0 || height <= 0; }

    [[nodiscard]] PixelBox intersected(const PixelBox& other) const {
        const int left = std::max(x, other.x);
        const int top = std::max(y, other.y);
        return {left, top, std::max(0, std::min(right(), other.right()) - left),
                std::max(0, std::min(bottom(), other.bottom()) - top)};
    }
    /// The smallest box around both; an empty box adds nothing.
    [[nodiscard]] PixelBox united(const PixelBox& other) const {
        if (isEmpty()) return other;
        if (other.isEmpty()) return *this;
        const int left = std::min(x, other.x);
        const int top = std::min(y, other.y);
        return {left, top, std::max(right(), other.right()) - left, std::max(bottom(), other.bottom()) - top};
    }
};

/// One plane of 8-bit samples, seen but not owned.
template <class Sample>
struct PlaneView {
    Sample* data = nullptr;
    std::ptrdiff_t stride = 0; ///< bytes from one row to the next
    int width = 0;
    int height = 0;

    [[nodiscard]] Sample* row(int y) const { return data + y * stride; }
};

enum class Subsampling {
    Quarter, ///< 4:2:0: chroma at half width and half height
    None     ///< 4:4:4
};

/// A picture in the codec's planes: Y'CbCr, BT.709 matrix, 8 bit, limited range (16..235, 16..240).
/// In 4:2:0 the width and height are even, and a chroma sample sits level with the left one of its two columns and
/// halfway between its two rows, as H.264 has it by default. The rows of a picture with samples of its own start 64-byte
/// aligned.
class Picture {
public:
    /// A picture with samples of its own, not yet set.
    Picture(PixelSize size, Subsampling subsampling);
    /// A picture over samples that `owner` keeps alive, such as a decoded frame: nothing is copied. Planes must have the
    /// sizes that `size` and `subsampling` give them. Samples that others still read (a decoder does) must not be
    /// written: hand such a picture on as const.
    Picture(PixelSize size, Subsampling subsampling, const std::array<PlaneView<std::uint8_t>, 3>& planes,
            std::shared_ptr<void> owner);

    Picture(Picture&&) noexcept = default;
    Picture& operator=(Picture&&) noexcept = default;
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;
    ~Picture() = default;

    [[nodiscard]] PixelSize size() const { return m_size; }
    [[nodiscard]] Subsampling subsampling() const { return m_subsampling; }

    /// Plane 0 is luma, 1 is Cb, 2 is Cr.
    [[nodiscard]] PlaneView<std::uint8_t> plane(int index) { return m_planes[static_cast<std::size_t>(index)]; }
    [[nodiscard]] PlaneView<const std::uint8_t> plane(int index) const {
        const PlaneView<std::uint8_t>& plane = m_planes[static_cast<std::size_t>(index)];
        return {plane.data, plane.stride, plane.width, plane.height};
    }

private:
    PixelSize m_size;
    Subsampling m_subsampling;
    std::array<PlaneView<std::uint8_t>, 3> m_planes;
    std::shared_ptr<void> m_owner; ///< of the samples; shared only with what decoded them
};

/// An image of 32-bit pixels, premultiplied alpha, B G R A in memory, rows packed: pointer shapes and sprites.
struct Image {
    PixelSize size;
    std::vector<std::uint8_t> pixels; ///< 4 × width × height bytes

    bool operator==(const Image&) const = default;
    [[nodiscard]] bool isEmpty() const { return size.width <= 0 || size.height <= 0; }
};

/// Pixels of a screen, 32 bits each (B G R and one unused byte), seen but not owned.
struct ScreenPixels {
    const std::uint8_t* data = nullptr;
    std::ptrdiff_t stride = 0;
    PixelSize size;
};

} // namespace morvelin
