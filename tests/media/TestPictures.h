// Pictures that carry their own number in large blocks, so that a decoded frame tells which one it is.
#pragma once

#include <array>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <utility>
#include <vector>

#include "core/base/Time.h"
#include "platform/Picture.h"

namespace morvelin {

inline constexpr PixelSize kTestSize{320, 176};
inline constexpr int kNumberBits = 12;

inline void fill(Picture& picture, PixelBox box, std::array<std::uint8_t, 3> colour) {
    for (int index = 0; index < 3; ++index) {
        const int divisor = index > 0 && picture.subsampling() == Subsampling::Quarter ? 2 : 1;
        const auto plane = picture.plane(index);
        for (int y = box.y / divisor; y < box.bottom() / divisor; ++y)
            for (int x = box.x / divisor; x < box.right() / divisor; ++x)
                plane.row(y)[x] = colour[static_cast<std::size_t>(index)];
    }
}

inline PixelBox whole(const Picture& picture) { return {0, 0, picture.size().width, picture.size().height}; }

inline PixelBox bitBox(int bit) { return {16 + 24 * bit, 32, 16, 48}; }

/// Writes the number as blocks of light and dark; gives the boxes that may differ from any other number.
inline std::vector<PixelBox> drawNumber(Picture& picture, int number) {
    std::vector<PixelBox> boxes;
    for (int bit = 0; bit < kNumberBits; ++bit) {
        const bool isSet = (number >> bit & 1) != 0;
        fill(picture, bitBox(bit), {static_cast<std::uint8_t>(isSet ? 200 : 40), 128, 128});
        boxes.push_back(bitBox(bit));
    }
    return boxes;
}

inline int numberIn(const Picture& picture) {
    int number = 0;
    for (int bit = 0; bit < kNumberBits; ++bit) {
        const PixelBox box = bitBox(bit);
        if (picture.plane(0).row(box.y + 24)[box.x + 8] > 120) number |= 1 << bit;
    }
    return number;
}

/// A picture with detail all over, as a screen has.
inline Picture detailedPicture(PixelSize size, Subsampling subsampling = Subsampling::Quarter) {
    Picture picture(size, subsampling);
    for (int index = 0; index < 3; ++index) {
        const auto plane = picture.plane(index);
        for (int y = 0; y < plane.height; ++y)
            for (int x = 0; x < plane.width; ++x)
                plane.row(y)[x] = static_cast<std::uint8_t>(index == 0 ? 60 + (x / 3 + y / 2) % 120
                                                                       : 100 + (x + y) % 56);
    }
    return picture;
}

struct PictureDistance {
    int largest = 0;
    double mean = 0;
};

inline PictureDistance distance(const Picture& a, const Picture& b) {
    PictureDistance result;
    double sum = 0;
    double count = 0;
    for (int index = 0; index < 3; ++index) {
        const auto planeA = a.plane(index);
        const auto planeB = b.plane(index);
        for (int y = 0; y < planeA.height; ++y)
            for (int x = 0; x < planeA.width; ++x) {
                const int difference = std::abs(planeA.row(y)[x] - planeB.row(y)[x]);
                result.largest = std::max(result.largest, difference);
                sum += difference;
                ++count;
            }
    }
    result.mean = sum / count;
    return result;
}

inline bool areEqual(const Picture& a, const Picture& b) { return distance(a, b).largest == 0; }

} // namespace morvelin
