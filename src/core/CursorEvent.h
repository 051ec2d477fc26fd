// The recorded pointer: its samples and the shapes it had.
#pragma once

#include <optional>
#include <vector>

#include "core/base/JSON.h"
#include "core/base/Time.h"

namespace morvelin {

enum class CursorEventType { Move, MouseDown, MouseUp };

constexpr auto rawValues(std::type_identity<CursorEventType>) {
    using enum CursorEventType;
    return std::to_array<std::pair<CursorEventType, std::string_view>>(
        {{Move, "move"}, {MouseDown, "mouseDown"}, {MouseUp, "mouseUp"}});
}

enum class MouseButton { Left, Right, Other };

constexpr auto rawValues(std::type_identity<MouseButton>) {
    using enum MouseButton;
    return std::to_array<std::pair<MouseButton, std::string_view>>(
        {{Left, "left"}, {Right, "right"}, {Other, "other"}});
}

/// One sample of the pointer's track; positions in capture space.
struct CursorEvent {
    SourceTime timestamp;
    double x = 0;
    double y = 0;
    CursorEventType event = CursorEventType::Move;
    std::optional<MouseButton> button;      ///< on press and release
    std::optional<std::int64_t> clickCount; ///< on press and release

    bool operator==(const CursorEvent&) const = default;
};

template <class Fields>
void describe(Fields& fields, Same<Fields, CursorEvent>& sample) {
    fields.required("timestamp", sample.timestamp);
    fields.required("x", sample.x);
    fields.required("y", sample.y);
    fields.required("event", sample.event);
    fields.optional("button", sample.button);
    fields.optional("clickCount", sample.clickCount);
}

/// One press, as overlays and the finished video show it.
struct ClickPing {
    EditTime time;
    double x = 0;
    double y = 0;
    MouseButton button = MouseButton::Left;
    std::int64_t clickCount = 1;

    bool operator==(const ClickPing&) const = default;
};

/// The time line of the pointer's recorded shapes (`cursorShapes.json`).
struct CursorShapeTrack {
    enum class Kind { Arrow, Other };

    struct Shape {
        std::int64_t id = 0;
        Kind kind = Kind::Other;
        double width = 0; ///< points of the pointer's image
        double height = 0;
        double hotSpotX = 0;
        double hotSpotY = 0;

        bool operator==(const Shape&) const = default;
    };

    /// From `t` onward the pointer has this shape, or none that is known.
    struct Change {
        SourceTime t;
        std::optional<std::int64_t> shape;

        bool operator==(const Change&) const = default;
    };

    std::int64_t version = 1;
    double captureWidth = 0; ///< the captured area in points
    double captureHeight = 0;
    std::vector<Shape> shapes;
    std::vector<Change> changes;

    bool operator==(const CursorShapeTrack&) const = default;
};

constexpr auto rawValues(std::type_identity<CursorShapeTrack::Kind>) {
    using enum CursorShapeTrack::Kind;
    return std::to_array<std::pair<CursorShapeTrack::Kind, std::string_view>>({{Arrow, "arrow"}, {Other, "other"}});
}

template <class Fields>
void describe(Fields& fields, Same<Fields, CursorShapeTrack::Shape>& shape) {
    fields.required("id", shape.id);
    fields.required("kind", shape.kind);
    fields.required("width", shape.width);
    fields.required("height", shape.height);
    fields.required("hotSpotX", shape.hotSpotX);
    fields.required("hotSpotY", shape.hotSpotY);
}

template <class Fields>
void describe(Fields& fields, Same<Fields, CursorShapeTrack::Change>& change) {
    fields.required("t", change.t);
    fields.optional("shape", change.shape);
}

template <class Fields>
void describe(Fields& fields, Same<Fields, CursorShapeTrack>& track) {
    fields.required("version", track.version);
    fields.required("captureWidth", track.captureWidth);
    fields.required("captureHeight", track.captureHeight);
    fields.required("shapes", track.shapes);
    fields.required("changes", track.changes);
}

} // namespace morvelin
