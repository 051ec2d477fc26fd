#include "render/EventsSidecar.h"

#include <algorithm>
#include <cmath>

#include "core/base/Rounding.h"
#include "render/SidecarFile.h"
#include "timeline/ClickPings.h"
#include "timeline/FragmentMap.h"

namespace morvelin {

namespace {

using Event = FounderEventsSidecar::Event;
using EffectSemantics = FounderEventsSidecar::EffectSemantics;

constexpr double kSameZoom = 1e-6;
constexpr double kSmallestBubbleSide = 0.02;

template <class TimeType>
TimeType rounded(TimeType time) {
    return TimeType(roundedTo3Decimals(time.value));
}

NormalizedRect rounded(const NormalizedRect& rect) {
    return {roundedTo3Decimals(rect.x), roundedTo3Decimals(rect.y), roundedTo3Decimals(rect.width),
            roundedTo3Decimals(rect.height)};
}

const std::map<std::string, EffectSemantics>& effectSemantics() {
    using enum EffectIntent;
    using Priority = EffectAttentionPriority;
    static const std::map<std::string, EffectSemantics> table{
        {"tapTap",
         {ReadThis, Priority::High, false, EffectGeometry::Point,
          "The author is saying \"read this / this is important\" about the point at (x, y)."}},
        {"focus",
         {HighlightTarget, Priority::High, false, EffectGeometry::Rect,
          "A circular emphasis drawn around a target the author selected (text, button, icon, image, group or "
          "arbitrary region), covering rect."}},
        {"mask",
         {ObscureContent, Priority::Low, false, EffectGeometry::Rect,
          "A privacy blur hiding the content inside rect; it points at nothing and asks for no attention."}}};
    return table;
}

FounderEventsSidecar::Conventions conventions() {
    return {"seconds in the exported video timeline",
            "normalized 0..1, origin top-left, relative to the captured screen area (before zoom/padding)",
            "events on the \"effects\" track are editorial cues added by the author; they never represent a click, "
            "tap, selection or activation; user interactions live on the \"cursor\" track only. A focus rect is the "
            "selected target region: its cue center is (x + width / 2, y + height / 2)."};
}

Event eventOf(std::string track, std::string type, EditTime t) {
    Event event;
    event.t = rounded(t);
    event.track = std::move(track);
    event.type = std::move(type);
    return event;
}

/// Appends the events of one track after another; the order is part of the format.
class EventList {
public:
    std::vector<Event> events;

    void addClips(const FragmentMap& fragments) {
        for (const FragmentMap::Span& span : fragments.spans()) {
            Event& event = add("clip", "fragment", span.start);
            event.endT = rounded(span.end());
            event.sourceStart = rounded(span.fragment.sourceStart);
            event.sourceEnd = rounded(span.fragment.sourceEnd);
            event.speed = roundedTo3Decimals(span.fragment.speed);
        }
    }

    void addClicks(const std::vector<ClickPing>& clicks) {
        for (const ClickPing& click : clicks) {
            Event& event = add("cursor", "click", click.time);
            setPlace(event, click.x, click.y);
            event.button = click.button;
            event.clickCount = click.clickCount;
        }
    }

    /// Only the keys that change the zoom: the others hold it.
    void addZooms(std::vector<ZoomKeyframe> keys) {
        std::ranges::stable_sort(keys, {}, &ZoomKeyframe::startTime);
        double previous = 1;
        for (const ZoomKeyframe& key : keys) {
            if (std::abs(key.zoomFactor - previous) > kSameZoom) {
                Event& event = add("zoom", key.zoomFactor > previous ? "zoomIn" : "zoomOut", key.startTime);
                event.endT = rounded(key.startTime + key.transitionTime);
                event.factor = roundedTo3Decimals(key.zoomFactor);
                event.transition = key.transitionType;
            }
            previous = key.zoomFactor;
        }
    }

    /// Tells the target that the author asked for, not the centre that the frame's edge allowed.
    void addPositions(std::vector<PositionKeyframe> keys) {
        std::ranges::stable_sort(keys, {}, &PositionKeyframe::time);
        for (const PositionKeyframe& key : keys)
            if (!key.isEphemeral) setPlace(add("position", "focusPoint", key.time), key.targetX, key.targetY);
    }

    void addEffects(const EditPayload& edit) {
        for (const FocusKeyframe& key : edit.focusKeyframes) {
            Event& event = addEffect("focus", key.startTime, key.endTime);
            event.rect = rounded(key.rect);
            event.target = key.target;
        }
        for (const MaskKeyframe& key : edit.maskKeyframes) {
            Event& event = addEffect("mask", key.startTime, key.endTime);
            event.rect = rounded(key.rect);
            event.blurRadius = roundedTo3Decimals(key.blurRadius);
        }
        for (const TapTapKeyframe& key : edit.tapTapKeyframes) {
            Event& event = addEffect("tapTap", key.startTime, key.endTime);
            setPlace(event, key.x, key.y);
            event.target = key.target;
        }
    }

    void addCameraBubble(const CameraSettings& camera, Seconds duration) {
        NormalizedRect bubble = camera.rect;
        bubble.width = std::max(bubble.width, kSmallestBubbleSide);
        bubble.height = std::max(bubble.height, kSmallestBubbleSide);
        bubble.x = std::clamp(bubble.x, 0.0, std::max(0.0, 1 - bubble.width));
        bubble.y = std::clamp(bubble.y, 0.0, std::max(0.0, 1 - bubble.height));
        Event& event = add("overlay", "cameraBubble", EditTime(0));
        event.endT = rounded(EditTime(duration));
        event.rect = rounded(bubble);
    }

private:
    Event& add(std::string track, std::string type, EditTime t) {
        return events.emplace_back(eventOf(std::move(track), std::move(type), t));
    }

    Event& addEffect(const std::string& type, EditTime start, EditTime end) {
        const EffectSemantics& semantics = effectSemantics().at(type);
        Event& event = add("effects", type, start);
        event.endT = rounded(end);
        event.intent = semantics.intent;
        event.attentionPriority = semantics.attentionPriority;
        event.interaction = semantics.interaction;
        return event;
    }

    static void setPlace(Event& event, double x, double y) {
        event.x = roundedTo3Decimals(x);
        event.y = roundedTo3Decimals(y);
    }
};

} // namespace

FounderEventsSidecar makeEventsSidecar(const EventsSidecarSubject& subject) {
    const EditPayload& edit = subject.edit;
    const FragmentMap fragments(edit.fragments);
    const std::vector<ClickPing> clicks = clickPings(subject.cursorEvents, fragments);
    const bool hasCameraOverlay = subject.recordingHasCamera && edit.cameraEnabled && edit.camera.has_value();

    EventList list;
    list.addClips(fragments);
    list.addClicks(clicks);
    const std::size_t beforeZooms = list.events.size();
    list.addZooms(edit.zoomKeyframes);
    const std::size_t zoomSegments = list.events.size() - beforeZooms;
    list.addPositions(edit.positionKeyframes);
    list.addEffects(edit);
    if (hasCameraOverlay) list.addCameraBubble(*edit.camera, subject.duration);

    FounderEventsSidecar sidecar;
    sidecar.format = "morvelin-events";
    sidecar.generator = sidecarGenerator(subject.applicationVersion);
    sidecar.video = {subject.videoFile,
                     rounded(subject.duration),
                     {subject.resolution.width, subject.resolution.height},
                     roundedTo3Decimals(subject.frameRate)};
    sidecar.conventions = conventions();
    sidecar.effectSemantics = effectSemantics();
    sidecar.summary = {clicks.size(),
                       zoomSegments,
                       edit.fragments.size(),
                       {edit.focusKeyframes.size(), edit.maskKeyframes.size(), edit.tapTapKeyframes.size()},
                       hasCameraOverlay};
    sidecar.events = std::move(list.events);
    return sidecar;
}

std::string encode(const FounderEventsSidecar& sidecar) { return writeJSON(toJSON(sidecar), JSONStyle::Pretty); }

} // namespace morvelin
