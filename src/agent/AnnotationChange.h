// What `update_annotation` may change, and which of it each kind of annotation has.
#pragma once

#include <optional>
#include <string>

#include "agent/ArgumentReader.h"
#include "core/Keyframes.h"
#include "core/base/Result.h"

namespace morvelin {

enum class AnnotationKind { Focus, Mask, TapTap };

/// As sentences call it.
[[nodiscard]] const char* word(AnnotationKind kind);

inline constexpr Seconds kShortestAnnotation = 0.05_s;

/// The limits of a mask's strength and of a hand's height.
inline constexpr double kLeastBlur = 6, kMostBlur = 64;
inline constexpr double kLeastSize = 0.08, kMostSize = 0.6;

/// What is absent keeps its value.
struct AnnotationChange {
    std::optional<EditTime> start;
    std::optional<EditTime> end;
    std::optional<NormalizedRect> rect;
    std::optional<double> blurRadius;
    std::optional<double> x;
    std::optional<double> y;
    std::optional<double> size;
    std::optional<Seconds> fadeOut;
    std::optional<std::string> label; ///< an empty one clears it
    std::optional<EffectTarget::Kind> targetKind;
};

/// Fails for fields that the kind doesn't have, all named at once, and for what is out of range.
[[nodiscard]] Result<AnnotationChange, std::string> annotationChange(const ArgumentReader& arguments,
                                                                     AnnotationKind kind, Seconds duration);

/// The annotation so changed: a start alone slides it, an end resizes it. Fails where it would end before it begins.
[[nodiscard]] Result<FocusKeyframe, std::string> changed(FocusKeyframe key, const AnnotationChange& change);
[[nodiscard]] Result<MaskKeyframe, std::string> changed(MaskKeyframe key, const AnnotationChange& change);
[[nodiscard]] Result<TapTapKeyframe, std::string> changed(TapTapKeyframe key, const AnnotationChange& change);

// Arguments that a new annotation and a changed one read alike.

/// The time `at`, within the timeline. Fails with `outsideTimeline`, or `emptyTimeline` where there is none.
[[nodiscard]] Result<std::optional<EditTime>, std::string> startArgument(const ArgumentReader& arguments,
                                                                         Seconds duration);
/// The time `until`, at most the timeline's end: nothing is shown for longer.
[[nodiscard]] std::optional<EditTime> endArgument(const ArgumentReader& arguments, Seconds duration);
/// Fails with the sentence that asks for a whole rectangle.
[[nodiscard]] Result<NormalizedRect, std::string> wholeRect(const ArgumentReader& arguments, AnnotationKind kind);
/// What the cue points at; nothing once neither a label nor a kind is known.
[[nodiscard]] std::optional<EffectTarget> retargeted(std::optional<EffectTarget> present,
                                                     const AnnotationChange& change);
/// `label` and `target_kind` alone.
[[nodiscard]] Result<void, std::string> readTarget(AnnotationChange& change, const ArgumentReader& arguments);
/// Fails for a span that would be over before it is seen.
[[nodiscard]] Result<void, std::string> checkSpan(EditTime start, EditTime end);

} // namespace morvelin
