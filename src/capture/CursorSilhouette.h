// A pointer's outline in a form that can be compared, whatever the image's size. A pure value.
#pragma once

#include <bitset>

#include "platform/Picture.h"

namespace morvelin {

struct CursorSilhouette {
    static constexpr int kSide = 24;

    std::bitset<kSide * kSide> cells; ///< row by row

    /// The image without its transparent margin, stretched over the cells; a cell is on where it is mostly opaque.
    [[nodiscard]] static CursorSilhouette of(const Image& image);

    /// Cells on in both, divided by cells on in either; 0 when none is on.
    [[nodiscard]] double likeness(const CursorSilhouette& other) const;
};

} // namespace morvelin
