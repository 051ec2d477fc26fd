// The keys of the timeline's tracks: zoom, position, mask, focus and tap-tap. All on the edit timeline.
#pragma once

#include <optional>
#include <string>

#include "core/Geometry.h"
#include "core/base/Identity.h"
#include "core/base/Time.h"

namespace morvelin {

enum class ZoomTransitionType { Linear, Smooth };

constexpr auto rawValues(std::type_identity<ZoomTransitionType>) {
    using enum ZoomTransitionType;
    return std::to_array<std::pair<ZoomTransitionType, std::string_view>>({{Linear, "linear"}, {Smooth, "smooth"}});
}

/// A zoom ramp: it starts at `startTime`, reaches `zoomFactor` after `transitionTime` and holds it until the next one.
struct ZoomKeyframe {
    UUID id;
    EditTime startTime;
    Seconds transitionTime;
    double zoomFactor = 1;
    ZoomTransitionType transitionType = ZoomTransitionType::Smooth;
    bool isManual = false; ///< set by a person or an agent

    bool operator==(const ZoomKeyframe&) const = default;

    /// What a track that would be empty holds.
    [[nodiscard]] static ZoomKeyframe baseline(IdSource& ids) {
        return ZoomKeyframe{ids.next(), EditTime(0), Seconds(0), 1, ZoomTransitionType::Smooth, true};
    }
};

template <class Fields>
void describe(Fields& fields, Same<Fields, ZoomKeyframe>& key) {
    fields.required("id", key.id);
    fields.required("startTime", key.startTime);
    fields.required("transitionTime", key.transitionTime);
    fields.required("zoomFactor", key.zoomFactor);
    fields.required("transitionType", key.transitionType);
    fields.required("isManual", key.isManual);
}

/// Where the frame is aimed at a moment, at whatever zoom is active.
struct PositionKeyframe {
    UUID id;
    EditTime time;
    double centerX = 0.5; ///< the view's centre, clamped so that the frame never shows past the capture's edge
    double centerY = 0.5;
    double targetX = 0.5; ///< the point that was asked for
    double targetY = 0.5;
    std::optional<UUID> zoomKeyframeID; ///< the ramp that owns this key
    bool isEphemeral = false;           ///< derived in memory; never written

    bool operator==(const PositionKeyframe&) const = default;

    [[nodiscard]] static PositionKeyframe baseline(IdSource& ids) {
        PositionKeyframe key;
        key.id = ids.next();
        return key;
    }
};

/// `id`, `targetX` and `targetY` are missing in old files: a target is then the centre, and an id that stays all zero
/// is replaced by whoever opened the file (`ProjectBundle`), which holds the source of ids.
template <class Fields>
void describe(Fields& fields, Same<Fields, PositionKeyframe>& key) {
    fields.withDefault("id", key.id, UUID{});
    fields.required("time", key.time);
    fields.required("centerX", key.centerX);
    fields.required("centerY", key.centerY);
    fields.withDefault("targetX", key.targetX, key.centerX);
    fields.withDefault("targetY", key.targetY, key.centerY);
    fields.optional("zoomKeyframeID", key.zoomKeyframeID);
}

/// A privacy blur over a rectangle.
struct MaskKeyframe {
    UUID id;
    EditTime startTime;
    EditTime endTime;
    NormalizedRect rect;
    double blurRadius = 0;

    bool operator==(const MaskKeyframe&) const = default;
};

template <class Fields>
void describe(Fields& fields, Same<Fields, MaskKeyframe>& key) {
    fields.required("id", key.id);
    fields.required("startTime", key.startTime);
    fields.required("endTime", key.endTime);
    fields.required("rect", key.rect);
    fields.required("blurRadius", key.blurRadius);
}

/// What an annotation points at, for agents that read the video's sidecar.
struct EffectTarget {
    enum class Kind { Text, Button, Icon, Image, Region, Unknown };

    Kind kind = Kind::Unknown;
    std::optional<std::string> label;

    bool operator==(const EffectTarget&) const = default;
};

constexpr auto rawValues(std::type_identity<EffectTarget::Kind>) {
    using enum EffectTarget::Kind;
    return std::to_array<std::pair<EffectTarget::Kind, std::string_view>>({{Text, "text"},
                                                                           {Button, "button"},
                                                                           {Icon, "icon"},
                                                                           {Image, "image"},
                                                                           {Region, "region"},
                                                                           {Unknown, "unknown"}});
}

template <class Fields>
void describe(Fields& fields, Same<Fields, EffectTarget>& target) {
    fields.required("kind", target.kind);
    fields.optional("label", target.label);
}

/// A hand-drawn oval around a rectangle: "look here".
struct FocusKeyframe {
    UUID id;
    EditTime startTime;
    EditTime endTime;
    NormalizedRect rect;
    Seconds fadeOutDuration;
    std::optional<EffectTarget> target;
    std::optional<CodableColor> color; ///< in place of the project's `annotationColor`

    bool operator==(const FocusKeyframe&) const = default;
};

template <class Fields>
void describe(Fields& fields, Same<Fields, FocusKeyframe>& key) {
    fields.required("id", key.id);
    fields.required("startTime", key.startTime);
    fields.required("endTime", key.endTime);
    fields.required("rect", key.rect);
    fields.required("fadeOutDuration", key.fadeOutDuration);
    fields.optional("target", key.target);
    fields.optional("color", key.color);
}

/// A cartoon hand tapping a point twice: "read this".
struct TapTapKeyframe {
    UUID id;
    EditTime startTime;
    EditTime endTime;
    double x = 0.5;
    double y = 0.5;
    double size = 0;
    std::optional<EffectTarget> target;

    bool operator==(const TapTapKeyframe&) const = default;
};

template <class Fields>
void describe(Fields& fields, Same<Fields, TapTapKeyframe>& key) {
    fields.required("id", key.id);
    fields.required("startTime", key.startTime);
    fields.required("endTime", key.endTime);
    fields.required("x", key.x);
    fields.required("y", key.y);
    fields.required("size", key.size);
    fields.optional("target", key.target);
}

enum class TapTapStyle { Pointer, Glove };

constexpr auto rawValues(std::type_identity<TapTapStyle>) {
    using enum TapTapStyle;
    return std::to_array<std::pair<TapTapStyle, std::string_view>>({{Pointer, "pointer"}, {Glove, "glove"}});
}

/// Opacity of a focus oval at a moment, 0..1. It fades in over 0.2 s, or 40 % of a short oval, and out over its own
/// `fadeOutDuration`.
[[nodiscard]] double focusOpacity(const FocusKeyframe& key, EditTime t);

/// Opacity of a tap-tap hand at a moment, 0..1: in over the first 5 % of its span, out over the last 15 %.
[[nodiscard]] double tapTapOpacity(const TapTapKeyframe& key, EditTime t);

} // namespace morvelin
