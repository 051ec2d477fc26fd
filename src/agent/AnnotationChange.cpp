#include "agent/AnnotationChange.h"

#include <algorithm>
#include <vector>

#include <fmt/ranges.h>

#include "agent/CommandTable.h"
#include "agent/EditArguments.h"
#include "agent/HeadlessEditError.h"

namespace morvelin {

namespace {

using Kind = AnnotationKind;

/// The arguments that belong to some kinds only and are given, but not to this one.
std::vector<std::string> strangeFields(const ArgumentReader& arguments, Kind kind) {
    struct Field {
        const char* name;
        std::vector<Kind> kinds;
    };
    static const std::vector<Field> fields{{"rect", {Kind::Focus, Kind::Mask}},
                                           {"blur_radius", {Kind::Mask}},
                                           {"x", {Kind::TapTap}},
                                           {"y", {Kind::TapTap}},
                                           {"size", {Kind::TapTap}},
                                           {"fade_out", {Kind::Focus}},
                                           {"label", {Kind::Focus, Kind::TapTap}},
                                           {"target_kind", {Kind::Focus, Kind::TapTap}}};
    std::vector<std::string> strange;
    for (const Field& field : fields)
        if (arguments.member(field.name) != nullptr && std::ranges::find(field.kinds, kind) == field.kinds.end())
            strange.emplace_back(field.name);
    return strange;
}

Result<void, std::string> readLook(AnnotationChange& change, const ArgumentReader& arguments, Kind kind) {
    if (arguments.member("rect") != nullptr) {
        const auto rect = wholeRect(arguments, kind);
        if (!rect) return failure(rect.error());
        change.rect = *rect;
    }
    const auto blur = rangedNumber(arguments, "blur_radius", kLeastBlur, kMostBlur);
    if (!blur) return failure(blur.error());
    const auto size = rangedNumber(arguments, "size", kLeastSize, kMostSize);
    if (!size) return failure(size.error());
    change.blurRadius = *blur;
    change.size = *size;
    change.x = fractionArgument(arguments, "x");
    change.y = fractionArgument(arguments, "y");
    if (const auto fadeOut = arguments.number("fade_out")) change.fadeOut = Seconds(*fadeOut);
    return {};
}

template <class Key>
Result<void, std::string> changeSpan(Key& key, const AnnotationChange& change) {
    const Seconds length = key.endTime - key.startTime;
    if (change.start) {
        key.startTime = *change.start;
        key.endTime = *change.start + length;
    }
    key.endTime = change.end.value_or(key.endTime);
    if (!change.start && !change.end) return {};
    return checkSpan(key.startTime, key.endTime);
}

} // namespace

const char* word(AnnotationKind kind) {
    switch (kind) {
    case Kind::Focus: return "focus";
    case Kind::Mask: return "mask";
    case Kind::TapTap: return "taptap";
    }
    std::unreachable();
}

Result<AnnotationChange, std::string> annotationChange(const ArgumentReader& arguments, AnnotationKind kind,
                                                       Seconds duration) {
    if (const auto strange = strangeFields(arguments, kind); !strange.empty())
        return refusal(HeadlessEditError(
            HeadlessEditError::FieldsNotApplicable{fmt::format("{}", fmt::join(strange, ", ")), word(kind)}));
    AnnotationChange change;
    const auto start = startArgument(arguments, duration);
    if (!start) return failure(start.error());
    change.start = *start;
    change.end = endArgument(arguments, duration);
    if (const auto read = readLook(change, arguments, kind); !read) return failure(read.error());
    if (const auto read = readTarget(change, arguments); !read) return failure(read.error());
    return change;
}

Result<FocusKeyframe, std::string> changed(FocusKeyframe key, const AnnotationChange& change) {
    if (const auto moved = changeSpan(key, change); !moved) return failure(moved.error());
    key.rect = change.rect.value_or(key.rect);
    if (change.fadeOut) key.fadeOutDuration = std::clamp(*change.fadeOut, 0_s, key.endTime - key.startTime);
    key.target = retargeted(std::move(key.target), change);
    return key;
}

Result<MaskKeyframe, std::string> changed(MaskKeyframe key, const AnnotationChange& change) {
    if (const auto moved = changeSpan(key, change); !moved) return failure(moved.error());
    key.rect = change.rect.value_or(key.rect);
    key.blurRadius = change.blurRadius.value_or(key.blurRadius);
    return key;
}

Result<TapTapKeyframe, std::string> changed(TapTapKeyframe key, const AnnotationChange& change) {
    if (const auto moved = changeSpan(key, change); !moved) return failure(moved.error());
    key.x = change.x.value_or(key.x);
    key.y = change.y.value_or(key.y);
    key.size = change.size.value_or(key.size);
    key.target = retargeted(std::move(key.target), change);
    return key;
}

Result<std::optional<EditTime>, std::string> startArgument(const ArgumentReader& arguments, Seconds duration) {
    const auto at = arguments.number("at");
    if (!at) return std::optional<EditTime>();
    if (duration <= 0_s) return refusal(HeadlessEditError(HeadlessEditError::EmptyTimeline{}));
    const EditTime start{*at};
    if (start < EditTime() || start > EditTime(duration))
        return refusal(HeadlessEditError(HeadlessEditError::OutsideTimeline{start, duration}));
    return std::optional(start);
}

std::optional<EditTime> endArgument(const ArgumentReader& arguments, Seconds duration) {
    const auto until = arguments.number("until");
    return until ? std::optional(std::min(EditTime(*until), EditTime(duration))) : std::nullopt;
}

Result<NormalizedRect, std::string> wholeRect(const ArgumentReader& arguments, AnnotationKind kind) {
    if (const auto rect = rectArgument(arguments)) return *rect;
    return invalidArgument("rect",
                           fmt::format("a {} needs a rect with x, y, width and height in 0–1 coordinates", word(kind)));
}

std::optional<EffectTarget> retargeted(std::optional<EffectTarget> present, const AnnotationChange& change) {
    if (!change.label && !change.targetKind) return present;
    EffectTarget target = present.value_or(EffectTarget());
    if (change.label) target.label = change.label->empty() ? std::nullopt : change.label;
    target.kind = change.targetKind.value_or(target.kind);
    const bool saysNothing = !target.label && target.kind == EffectTarget::Kind::Unknown;
    return saysNothing ? std::nullopt : std::optional(std::move(target));
}

Result<void, std::string> readTarget(AnnotationChange& change, const ArgumentReader& arguments) {
    change.label = arguments.text("label");
    const auto name = arguments.text("target_kind");
    if (!name) return {};
    change.targetKind = json::fromRawValue<EffectTarget::Kind>(*name);
    if (!change.targetKind || *change.targetKind == EffectTarget::Kind::Unknown)
        return invalidArgument("target_kind", "expected text, button, icon, image or region");
    return {};
}

Result<void, std::string> checkSpan(EditTime start, EditTime end) {
    if (end - start < kShortestAnnotation) return invalidArgument("at/until", "at has to be before until");
    return {};
}

} // namespace morvelin
