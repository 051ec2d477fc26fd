// The events file beside an export: tells an agent what happens in the video without watching it. A public wire format.
#pragma once

#include <array>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "core/CursorEvent.h"
#include "core/Geometry.h"
#include "core/Keyframes.h"
#include "core/ProjectVersion.h"
#include "core/base/Files.h"
#include "core/base/JSON.h"
#include "core/base/Time.h"
#include "platform/Picture.h"

namespace morvelin {

enum class EffectIntent { ReadThis, HighlightTarget, ObscureContent };
enum class EffectAttentionPriority { High, Medium, Low };
enum class EffectGeometry { Point, Rect };

constexpr auto rawValues(std::type_identity<EffectIntent>) {
    using enum EffectIntent;
    return std::to_array<std::pair<EffectIntent, std::string_view>>(
        {{ReadThis, "read_this"}, {HighlightTarget, "highlight_target"}, {ObscureContent, "obscure_content"}});
}

constexpr auto rawValues(std::type_identity<EffectAttentionPriority>) {
    using enum EffectAttentionPriority;
    return std::to_array<std::pair<EffectAttentionPriority, std::string_view>>(
        {{High, "high"}, {Medium, "medium"}, {Low, "low"}});
}

constexpr auto rawValues(std::type_identity<EffectGeometry>) {
    using enum EffectGeometry;
    return std::to_array<std::pair<EffectGeometry, std::string_view>>({{Point, "point"}, {Rect, "rect"}});
}

/// The whole file. Times are on the exported video's timeline, positions on the captured area; all numbers that are
/// measured are rounded to 3 decimals.
struct FounderEventsSidecar {
    struct Resolution {
        int width = 0;
        int height = 0;
    };

    struct Video {
        std::string file;
        Seconds duration;
        Resolution resolution;
        double fps = 0;
    };

    /// Fixed texts that say how the file is to be read.
    struct Conventions {
        std::string time;
        std::string coordinates;
        std::string effects;
    };

    /// What one type of effect means.
    struct EffectSemantics {
        EffectIntent intent = EffectIntent::ReadThis;
        EffectAttentionPriority attentionPriority = EffectAttentionPriority::Low;
        bool interaction = false;
        EffectGeometry geometry = EffectGeometry::Point;
        std::string meaning;
    };

    struct Summary {
        struct Effects {
            std::size_t focus = 0;
            std::size_t mask = 0;
            std::size_t tapTap = 0;
        };

        std::size_t clicks = 0;
        std::size_t zoomSegments = 0;
        std::size_t fragments = 0;
        Effects effects;
        bool hasCameraOverlay = false;
    };

    struct Event {
        EditTime t;
        std::string track;
        std::string type;
        std::optional<EditTime> endT;
        std::optional<double> x;
        std::optional<double> y;
        std::optional<MouseButton> button;
        std::optional<std::int64_t> clickCount;
        std::optional<double> factor;
        std::optional<ZoomTransitionType> transition;
        std::optional<NormalizedRect> rect;
        std::optional<double> blurRadius;
        std::optional<SourceTime> sourceStart;
        std::optional<SourceTime> sourceEnd;
        std::optional<double> speed;
        std::optional<EffectIntent> intent;
        std::optional<EffectAttentionPriority> attentionPriority;
        std::optional<bool> interaction;
        std::optional<EffectTarget> target;
    };

    std::string format;
    int version = 1;
    std::string generator;
    Video video;
    Conventions conventions;
    std::map<std::string, EffectSemantics> effectSemantics;
    Summary summary;
    std::vector<Event> events;
};

/// What a sidecar tells about. All is of the moment the export began.
struct EventsSidecarSubject {
    const EditPayload& edit;
    std::span<const CursorEvent> cursorEvents;
    bool recordingHasCamera = false;
    std::string videoFile;          ///< last path component
    Seconds duration;               ///< of the finished video
    PixelSize resolution;           ///< of the finished video
    double frameRate = 0;           ///< that it was written with
    std::string applicationVersion; ///< empty for a build without one
};

[[nodiscard]] FounderEventsSidecar makeEventsSidecar(const EventsSidecarSubject& subject);

/// The file's text: pretty, keys sorted, slashes plain, whole numbers without a point.
[[nodiscard]] std::string encode(const FounderEventsSidecar& sidecar);

template <class Fields>
void describe(Fields& fields, Same<Fields, FounderEventsSidecar::Resolution>& resolution) {
    fields.required("width", resolution.width);
    fields.required("height", resolution.height);
}

template <class Fields>
void describe(Fields& fields, Same<Fields, FounderEventsSidecar::Video>& video) {
    fields.required("file", video.file);
    fields.required("duration", video.duration);
    fields.required("resolution", video.resolution);
    fields.required("fps", video.fps);
}

template <class Fields>
void describe(Fields& fields, Same<Fields, FounderEventsSidecar::Conventions>& conventions) {
    fields.required("time", conventions.time);
    fields.required("coordinates", conventions.coordinates);
    fields.required("effects", conventions.effects);
}

template <class Fields>
void describe(Fields& fields, Same<Fields, FounderEventsSidecar::EffectSemantics>& semantics) {
    fields.required("intent", semantics.intent);
    fields.required("attentionPriority", semantics.attentionPriority);
    fields.required("interaction", semantics.interaction);
    fields.required("geometry", semantics.geometry);
    fields.required("meaning", semantics.meaning);
}

template <class Fields>
void describe(Fields& fields, Same<Fields, FounderEventsSidecar::Summary::Effects>& effects) {
    fields.required("focus", effects.focus);
    fields.required("mask", effects.mask);
    fields.required("tapTap", effects.tapTap);
}

template <class Fields>
void describe(Fields& fields, Same<Fields, FounderEventsSidecar::Summary>& summary) {
    fields.required("clicks", summary.clicks);
    fields.required("zoomSegments", summary.zoomSegments);
    fields.required("fragments", summary.fragments);
    fields.required("effects", summary.effects);
    fields.required("hasCameraOverlay", summary.hasCameraOverlay);
}

template <class Fields>
void describe(Fields& fields, Same<Fields, FounderEventsSidecar::Event>& event) {
    fields.required("t", event.t);
    fields.required("track", event.track);
    fields.required("type", event.type);
    fields.optional("endT", event.endT);
    fields.optional("x", event.x);
    fields.optional("y", event.y);
    fields.optional("button", event.button);
    fields.optional("clickCount", event.clickCount);
    fields.optional("factor", event.factor);
    fields.optional("transition", event.transition);
    fields.optional("rect", event.rect);
    fields.optional("blurRadius", event.blurRadius);
    fields.optional("sourceStart", event.sourceStart);
    fields.optional("sourceEnd", event.sourceEnd);
    fields.optional("speed", event.speed);
    fields.optional("intent", event.intent);
    fields.optional("attentionPriority", event.attentionPriority);
    fields.optional("interaction", event.interaction);
    fields.optional("target", event.target);
}

template <class Fields>
void describe(Fields& fields, Same<Fields, FounderEventsSidecar>& sidecar) {
    fields.required("format", sidecar.format);
    fields.required("version", sidecar.version);
    fields.required("generator", sidecar.generator);
    fields.required("video", sidecar.video);
    fields.required("conventions", sidecar.conventions);
    fields.required("effectSemantics", sidecar.effectSemantics);
    fields.required("summary", sidecar.summary);
    fields.required("events", sidecar.events);
}

} // namespace morvelin
