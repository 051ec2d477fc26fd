#include "agent/AnnotationTools.h"

#include <algorithm>

#include <fmt/format.h>

#include "agent/AnnotationChange.h"
#include "agent/EditArguments.h"
#include "agent/HeadlessEditError.h"
#include "agent/TrackDescriptions.h"
#include "timeline/FragmentMap.h"

namespace morvelin::AnnotationTools {

namespace {

using Kind = AnnotationKind;

constexpr Seconds kFocusLength = 3_s;
constexpr Seconds kTapTapLength = 0.9_s;
constexpr Seconds kFocusFadeOut = 0.5_s;
constexpr double kDefaultBlur = 24;
constexpr double kDefaultSize = 0.12;

std::optional<Kind> kindOf(const std::string& spelling) {
    if (spelling == "focus") return Kind::Focus;
    if (spelling == "mask" || spelling == "blur") return Kind::Mask;
    if (spelling == "taptap" || spelling == "tap_tap" || spelling == "tap") return Kind::TapTap;
    return std::nullopt;
}

Seconds durationOf(const EditedProject& project) { return FragmentMap(project.edit.fragments).duration(); }

struct Span {
    EditTime start;
    EditTime end;
};

EditTime usualEnd(Kind kind, EditTime start, Seconds duration) {
    switch (kind) {
    case Kind::Focus: return start + kFocusLength;
    case Kind::TapTap: return start + kTapTapLength;
    case Kind::Mask: return EditTime(duration);
    }
    std::unreachable();
}

Result<Span, std::string> span(const EditedProject& project, const ArgumentReader& arguments, Kind kind) {
    const Seconds duration = durationOf(project);
    const auto start = startArgument(arguments, duration);
    if (!start) return failure(start.error());
    if (!*start) return invalidArgument("at", "expected a time in seconds");
    const EditTime end = endArgument(arguments, duration).value_or(usualEnd(kind, **start, duration));
    if (const auto checked = checkSpan(**start, end); !checked) return failure(checked.error());
    return Span{**start, end};
}

Result<std::optional<EffectTarget>, std::string> target(const ArgumentReader& arguments) {
    AnnotationChange change;
    if (const auto read = readTarget(change, arguments); !read) return failure(read.error());
    return retargeted(std::nullopt, change);
}

ToolOutcome addFocus(EditedProject& project, const ArgumentReader& arguments, Span when) {
    const auto rect = wholeRect(arguments, Kind::Focus);
    if (!rect) return failure(rect.error());
    auto aim = target(arguments);
    if (!aim) return failure(aim.error());
    auto& focuses = project.edit.focusKeyframes;
    focuses.push_back({project.services.ids.next(), when.start, when.end, *rect, kFocusFadeOut, std::move(*aim), {}});
    return describeAnnotation(focuses.back());
}

ToolOutcome addMask(EditedProject& project, const ArgumentReader& arguments, Span when) {
    const auto rect = wholeRect(arguments, Kind::Mask);
    if (!rect) return failure(rect.error());
    const double blur = std::clamp(arguments.number("blur_radius").value_or(kDefaultBlur), kLeastBlur, kMostBlur);
    auto& masks = project.edit.maskKeyframes;
    masks.push_back({project.services.ids.next(), when.start, when.end, *rect, blur});
    return describeAnnotation(masks.back());
}

ToolOutcome addTapTap(EditedProject& project, const ArgumentReader& arguments, Span when) {
    const auto x = fractionArgument(arguments, "x");
    const auto y = fractionArgument(arguments, "y");
    if (!x || !y) return invalidArgument("x/y", "a taptap needs a point to tap");
    auto aim = target(arguments);
    if (!aim) return failure(aim.error());
    const double size = std::clamp(arguments.number("size").value_or(kDefaultSize), kLeastSize, kMostSize);
    auto& hands = project.edit.tapTapKeyframes;
    hands.push_back({project.services.ids.next(), when.start, when.end, *x, *y, size, std::move(*aim)});
    return describeAnnotation(hands.back());
}

/// Changes the annotation of that id in one of the tracks; nothing where the track doesn't hold it.
template <class Key>
std::optional<ToolOutcome> updateIn(std::vector<Key>& track, Kind kind, const UUID& id, Seconds duration,
                                    const ArgumentReader& arguments) {
    const auto key = std::ranges::find(track, id, &Key::id);
    if (key == track.end()) return std::nullopt;
    const auto change = annotationChange(arguments, kind, duration);
    if (!change) return failure(change.error());
    auto updated = changed(*key, *change);
    if (!updated) return failure(updated.error());
    *key = std::move(*updated);
    return ToolOutcome(describeAnnotation(*key));
}

} // namespace

ToolOutcome annotate(EditedProject& project, const ArgumentReader& arguments) {
    const auto type = arguments.text("type");
    if (!type) return invalidArgument("type", "expected focus, taptap or mask");
    const auto kind = kindOf(*type);
    if (!kind) return invalidArgument("type", fmt::format("expected focus, taptap or mask, got “{}”", *type));
    const auto when = span(project, arguments, *kind);
    if (!when) return failure(when.error());
    switch (*kind) {
    case Kind::Focus: return addFocus(project, arguments, *when);
    case Kind::Mask: return addMask(project, arguments, *when);
    case Kind::TapTap: return addTapTap(project, arguments, *when);
    }
    std::unreachable();
}

ToolOutcome update(EditedProject& project, const ArgumentReader& arguments) {
    const auto id = listedID(arguments);
    if (!id) return failure(id.error());
    const Seconds duration = durationOf(project);
    EditPayload& edit = project.edit;
    if (auto done = updateIn(edit.focusKeyframes, Kind::Focus, *id, duration, arguments)) return *done;
    if (auto done = updateIn(edit.maskKeyframes, Kind::Mask, *id, duration, arguments)) return *done;
    if (auto done = updateIn(edit.tapTapKeyframes, Kind::TapTap, *id, duration, arguments)) return *done;
    return refusal(HeadlessEditError(HeadlessEditError::UnknownAnnotation{id->text()}));
}

ToolOutcome remove(EditedProject& project, const ArgumentReader& arguments) {
    EditPayload& edit = project.edit;
    if (arguments.flag("all", false)) {
        const auto type = arguments.text("type");
        const auto only = type ? kindOf(*type) : std::nullopt;
        if (type && !only) return invalidArgument("type", "expected focus, taptap or mask");
        std::size_t removed = 0;
        const auto clear = [&](auto& track, Kind kind) {
            if (only.value_or(kind) == kind) removed += std::exchange(track, {}).size();
        };
        clear(edit.focusKeyframes, Kind::Focus);
        clear(edit.maskKeyframes, Kind::Mask);
        clear(edit.tapTapKeyframes, Kind::TapTap);
        return JSONValue{{"removed", removed}};
    }
    const auto text = arguments.text("id");
    if (!text) return invalidArgument("id", "expected an annotation id, or all: true");
    const auto id = UUID::parse(*text);
    const auto isIt = [&](const auto& key) { return id && key.id == *id; };
    const std::size_t removed = std::erase_if(edit.focusKeyframes, isIt) + std::erase_if(edit.maskKeyframes, isIt) +
                                std::erase_if(edit.tapTapKeyframes, isIt);
    if (removed == 0)
        return invalidArgument(
            "id", fmt::format("no annotation with id {}: call describe_project for the ones on this project", *text));
    return JSONValue{{"removed", 1}};
}

} // namespace morvelin::AnnotationTools
