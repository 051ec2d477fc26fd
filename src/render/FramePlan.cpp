#include "render/FramePlan.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "render/AccentColor.h"
#include "render/CursorScene.h"
#include "render/CursorSprite.h"

namespace morvelin {

namespace {

constexpr Seconds kRingLife{0.55};
constexpr Seconds kSecondRingDelay{0.09};
constexpr CodableColor kRightClickColor{0.2314, 0.5098, 0.9647, 1};
constexpr CodableColor kOtherClickColor{0.0627, 0.7255, 0.5059, 1};
/// A ring may lie this far outside the stage's picture, as a fraction of it.
constexpr double kRingMargin = 0.15;
/// A pointer below this many pixels is not seen.
constexpr double kSmallestPointer = 0.5;
/// Steps of the pointer's place: too fine to be seen, and a pointer at rest gives equal values.
constexpr double kPointerSteps = 16;
/// Far enough outside for an edge that must not show.
constexpr double kBeyondEdge = 4;

Rectangle outputRectangle(const CompositionInstruction& instruction) {
    return {0, 0, static_cast<double>(instruction.outputSize.width),
            static_cast<double>(instruction.outputSize.height)};
}

bool isFinite(const Rectangle& rect) {
    return std::isfinite(rect.x) && std::isfinite(rect.y) && std::isfinite(rect.width) && std::isfinite(rect.height);
}

bool meet(const Rectangle& a, const Rectangle& b) {
    return a.x < b.right() && b.x < a.right() && a.y < b.bottom() && b.y < a.bottom();
}

/// A span along one axis between two edges.
struct Span {
    double start;
    double end;
};

/// Where a mask covers the picture's own edge, nothing of the edge may shine through: it reaches beyond. Where it lies
/// outside of what is seen, it ends just outside, so that a pan far away changes nothing.
Span maskSpan(double from, double length, double frameStart, double frameLength, double output) {
    double start = frameStart + from * frameLength;
    double end = start + length * frameLength;
    if (from <= 0) start -= kBeyondEdge;
    if (from + length >= 1) end += kBeyondEdge;
    return {std::clamp(start, -kBeyondEdge, output + kBeyondEdge), std::clamp(end, -kBeyondEdge, output + kBeyondEdge)};
}

void addMasks(const CompositionInstruction& instruction, EditTime t, FramePlan& plan) {
    const Rectangle output = outputRectangle(instruction);
    const Rectangle& frame = plan.stage.frameRect;
    const Rectangle visible = frame.intersected(output);
    for (const MaskKeyframe& key : instruction.maskKeyframes) {
        if (t < key.startTime || !(t < key.endTime) || !(key.blurRadius > 0)) continue;
        const Rectangle place = plan.stage.outputRectangle(key.rect);
        if (!isFinite(place) || !(place.width > 0) || !(place.height > 0) || !meet(place, visible)) continue;

        const Span x = maskSpan(key.rect.x, key.rect.width, frame.x, frame.width, output.width);
        const Span y = maskSpan(key.rect.y, key.rect.height, frame.y, frame.height, output.height);
        // Wider than the whole output a blur no longer changes.
        const double widest = 2 * std::max(output.width, output.height);
        plan.masks.push_back({{x.start, y.start, x.end - x.start, y.end - y.start}, std::min(key.blurRadius, widest)});
    }
}

CodableColor ringColor(const CompositionInstruction& instruction, MouseButton button) {
    if (instruction.clickAnimationColor) return *instruction.clickAnimationColor;
    switch (button) {
    case MouseButton::Left: return kAccentColor;
    case MouseButton::Right: return kRightClickColor;
    case MouseButton::Other: return kOtherClickColor;
    }
    return kAccentColor;
}

/// A ring opens fast and slows down while it fades.
PingRing ringAt(double age, double base, const NormalizedPoint& center, CodableColor color) {
    const double fade = 1 - age / kRingLife.value;
    const double eased = fade * fade * fade;
    const double diameter = base * 0.075 * ((1 - eased) * 0.95 + 0.05);
    color.alpha = std::clamp(color.alpha, 0.0, 1.0) * fade * 0.9;
    return {center.x, center.y, diameter, std::max(base * 0.0018, 1.5), color};
}

void addRings(const CompositionInstruction& instruction, EditTime t, FramePlan& plan) {
    if (!instruction.clickAnimationsEnabled) return;
    const Rectangle& video = plan.stage.videoRect;
    const auto isNear = [](double x) { return x >= -kRingMargin && x <= 1 + kRingMargin; };
    for (const ClickPing& ping : instruction.clickPings) {
        const Seconds age = t - ping.time;
        if (!(age >= Seconds(0)) || !(age < kRingLife + kSecondRingDelay)) continue;
        const NormalizedPoint center = plan.stage.outputPoint(ping.x, ping.y);
        if (!isNear((center.x - video.x) / video.width) || !isNear((center.y - video.y) / video.height)) continue;

        const CodableColor color = ringColor(instruction, ping.button);
        for (int ring = 0; ring < (ping.clickCount > 1 ? 2 : 1); ++ring) {
            const Seconds ringAge = age - ring * kSecondRingDelay;
            if (ringAge >= Seconds(0) && ringAge < kRingLife)
                plan.rings.push_back(ringAt(ringAge.value, video.smallerSide(), center, color));
        }
    }
}

double inSteps(double value) { return std::round(value * kPointerSteps) / kPointerSteps; }

void addPointer(const CompositionInstruction& instruction, EditTime t, FramePlan& plan) {
    if (instruction.cursorScene == nullptr) return;
    const auto moment = instruction.fragments.heldSourceTime(t);
    if (!moment) return;
    std::optional<CursorSprite> sprite = instruction.cursorScene->sprite(moment->time);
    if (!sprite || sprite->image == nullptr || sprite->image->isEmpty()) return;

    const double width = sprite->width * plan.stage.frameRect.width;
    const double height = sprite->height * plan.stage.frameRect.height;
    if (!(width > kSmallestPointer) || !(height > kSmallestPointer)) return;
    const NormalizedPoint tip = plan.stage.outputPoint(sprite->position.x, sprite->position.y);
    const Rectangle place{inSteps(tip.x - sprite->hotSpot.x * width), inSteps(tip.y - sprite->hotSpot.y * height),
                          inSteps(width), inSteps(height)};
    if (isFinite(place) && meet(place, outputRectangle(instruction)))
        plan.pointer = PointerPlacement{std::move(sprite->image), place};
}

} // namespace

FramePlan framePlan(const CompositionInstruction& instruction, EditTime t, const FrameNumbers& frames) {
    FramePlan plan;
    plan.stage = stageGeometry(instruction, sampleDenseFrames(instruction.denseFrames, t));
    plan.sourceFrame = frames.recording;
    if (plan.stage.showsPicture) addMasks(instruction, t, plan);
    addRings(instruction, t, plan);
    addPointer(instruction, t, plan);
    plan.ovals = focusOvalsAt(instruction, plan.stage, t);
    plan.hands = tapTapHandsAt(instruction, plan.stage, t);
    if (instruction.cameraSettings && frames.camera >= 0)
        plan.camera = cameraBubble(*instruction.cameraSettings, plan.stage.videoRect, frames.camera);
    plan.caption = captionAt(instruction, plan.stage.videoRect, t);
    return plan;
}

} // namespace morvelin
