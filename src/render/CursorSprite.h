// The pointer at one moment of the recording: its image, and where it lies on the captured area. Made by `CursorScene`.
#pragma once

#include <memory>

#include "core/Geometry.h"
#include "platform/Picture.h"

namespace morvelin {

/// An image may hold more pixels than its size on the capture asks for; the compositor scales it to what is shown.
struct CursorSprite {
    std::shared_ptr<const Image> image; ///< premultiplied; equal pointers are the same image
    NormalizedPoint hotSpot;            ///< fractions of the image's size
    NormalizedPoint position;           ///< of the hot spot, in capture space
    double width = 0;                   ///< fractions of the capture
    double height = 0;

    bool operator==(const CursorSprite&) const = default;
};

} // namespace morvelin
