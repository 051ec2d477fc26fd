// The pointers of the program's own styles: drawn once, large enough for the largest pointer at a deep zoom. Made by a
// cursor scene.
#pragma once

#include <optional>

#include "core/Geometry.h"
#include "core/Style.h"
#include "platform/Picture.h"

namespace morvelin {

/// A pointer this many points high with all around it; its width follows from its image.
constexpr double kCursorArtworkHeight = 24;

struct CursorArtwork {
    CursorStyle style = CursorStyle::Ink;
    NormalizedPoint hotSpot; ///< fractions of the image's size

    /// Nothing for the system's own pointer.
    [[nodiscard]] static std::optional<CursorArtwork> of(CursorStyle style);

    /// The pointer as drawn; empty when that could not be done.
    [[nodiscard]] Image image() const;
};

} // namespace morvelin
