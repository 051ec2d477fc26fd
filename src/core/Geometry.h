// Points, rectangles and colours as the timeline's records hold them.
#pragma once

#include "core/base/JSON.h"

namespace morvelin {

/// A point of capture space: fractions of the captured area, origin top-left, y downward.
struct NormalizedPoint {
    double x = 0.5;
    double y = 0.5;

    bool operator==(const NormalizedPoint&) const = default;
};

/// Top-left corner and size in a unit square.
struct NormalizedRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    bool operator==(const NormalizedRect&) const = default;
};

template <class Fields>
void describe(Fields& fields, Same<Fields, NormalizedRect>& rect) {
    fields.required("x", rect.x);
    fields.required("y", rect.y);
    fields.required("width", rect.width);
    fields.required("height", rect.height);
}

/// An sRGB colour, each component 0..1, alpha not premultiplied.
struct CodableColor {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;

    bool operator==(const CodableColor&) const = default;
};

template <class Fields>
void describe(Fields& fields, Same<Fields, CodableColor>& color) {
    fields.required("red", color.red);
    fields.required("green", color.green);
    fields.required("blue", color.blue);
    fields.required("alpha", color.alpha);
}

} // namespace morvelin
