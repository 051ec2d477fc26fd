#include "agent/AnnotationTools.h"

#include <algorithm>

#include <fmt/ranges.h>

#include "agent/EditArguments.h"
#include "agent/HeadlessEditError.h"
#include "agent/TrackDescriptions.h"
#include "timeline/FragmentMap.h"

namespace morvelin::AnnotationTools {

namespace {

enum class Kind { Focus, Mask, TapTap };

constexpr Seconds kFocusLength = 3_s;
constexpr Seconds kTapTapLength = 0.9_s;
constexpr Seconds kFocusFadeOut = 0.5_s;
constexpr Seconds kShortest = 0.05_s;
constexpr double kDefaultBlur = 24, kLeastBlur = 6, kMostBlur = 64;
constexpr double kDefaultSize = 0.12, kLeastSize = 0.08, kMostSize = 0.6;

const char* word(Kind kind) {
    switch (kind) {
    case Kind::Focus: return "focus";
    case Kind::Mask: return "mask";
    case Kind::TapTap: return "taptap";
    }
    std::unreachable();
}

std::optional<Kind> kindOf(const std::string& spelling) {
    if (spelling == "focus") return Kind::Focus;
    if (spelling == "mask" || spelling == "blur") return Kind::Mask;
    if (spelling == "taptap" || spelling == "tap_tap" || spelling == "tap") return Kind::TapTap;
    return std::nullopt;
}

auto missingRect(Kind kind) {
    return invalidArgument("rect",
                           fmt::format("a {} needs a rect with x, y, width and height in 0–1 coordinates", word(kind)));
}

struct Span {
    EditTime start;
    EditTime end;
};

Result<Span, std::string> span(const EditedProject& project, const ArgumentReader& arguments, Kind kind) {
    const auto at = arguments.number("at");
    if (!at) return invalidArgument("at", "expected a time in seconds");
    const Seconds duration = FragmentMap(project.edit.fragments).duration();
    if (duration <= 0_s) return refusal(HeadlessEditError(HeadlessEditError::EmptyTimeline{}));
    const EditTime start{*at};
    if (start < EditTime() || start > EditTime(duration))
        return refusal(HeadlessEditError(HeadlessEditError::OutsideTimeline{start, duration}));
    EditTime end{duration};
    if (const auto until = arguments.number("until"))
        end = EditTime(*until);
    else if (kind != Kind::Mask)
        end = start + (kind == Kind::Focus ? kFocusLength : kTapTapLength);
    if (end - start < kShortest) return invalidArgument("at/until", "at has to be before until");
    return Span{start, end};
}

/// What the cue points at, as given; nothing where neither a label nor a kind is.
Result<std::optional<EffectTarget>, std::string> target(const ArgumentReader& arguments,
                                                        const std::optional<EffectTarget>& present) {
    std::optional<EffectTarget> changed = present;
    if (const auto label = arguments.text("label")) {
        if (!changed) changed.emplace();
        changed->label = label->empty() ? std::nullopt : label;
    }
    if (const auto name = arguments.text("target_kind")) {
        const auto kind = json::fromRawValue<EffectTarget::Kind>(*name);
        if (!kind || *kind == EffectTarget::Kind::Unknown)
            return invalidArgument("target_kind", "expected text, button, icon, image or region");
        if (!changed) changed.emplace();
        changed->kind = *kind;
    }
    if (changed && !changed->label && changed->kind == EffectTarget::Kind::Unknown) changed.reset();
    return changed;
}

ToolOutcome addFocus(EditedProject& project, const ArgumentReader& arguments, Span when) {
    const auto rect = rectArgument(arguments);
    if (!rect) return missingRect(Kind::Focus);
    auto aim = target(arguments, std::nullopt);
    if (!aim) return failure(aim.error());
    auto& focuses = project.edit.focusKeyframes;
    focuses.push_back({project.services.ids.next(), when.start, when.end, *rect, kFocusFadeOut, std::move(*aim), {}});
    return describeAnnotation(focuses.back());
}

ToolOutcome addMask(EditedProject& project, const ArgumentReader& arguments, Span when) {
    const auto rect = rectArgument(arguments);
    if (!rect) return missingRect(Kind::Mask);
    const double blur = std::clamp(arguments.number("blur_radius").value_or(kDefaultBlur), kLeastBlur, kMostBlur);
    auto& masks = project.edit.maskKeyframes;
    masks.push_back({project.services.ids.next(), when.start, when.end, *rect, blur});
    return describeAnnotation(masks.back());
}

ToolOutcome addTapTap(EditedProject& project, const ArgumentReader& arguments, Span when) {
    const auto x = arguments.number("x");
    const auto y = arguments.number("y");
    if (!x || !y) return invalidArgument("x/y", "a taptap needs a point to tap");
    auto aim = target(arguments, std::nullopt);
    if (!aim) return failure(aim.error());
    const double size = std::clamp(arguments.number("size").value_or(kDefaultSize), kLeastSize, kMostSize);
    auto& hands = project.edit.tapTapKeyframes;
    hands.push_back({project.services.ids.next(), when.start, when.end, std::clamp(*x, 0.0, 1.0),
                     std::clamp(*y, 0.0, 1.0), size, std::move(*aim)});
    return describeAnnotation(hands.back());
}

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

/// `at` alone slides the cue and keeps its length; `until` resizes it.
template <class Key>
Result<void, std::string> changeSpan(Key& key, const EditedProject& project, const ArgumentReader& arguments) {
    const Seconds length = key.endTime - key.startTime;
    const Seconds duration = FragmentMap(project.edit.fragments).duration();
    if (const auto at = arguments.number("at")) {
        if (*at < 0 || EditTime(*at) > EditTime(duration))
            return refusal(HeadlessEditError(HeadlessEditError::OutsideTimeline{EditTime(*at), duration}));
        key.startTime = EditTime(*at);
        key.endTime = key.startTime + length;
    }
    if (const auto until = arguments.number("until")) key.endTime = EditTime(*until);
    if (key.endTime - key.startTime < kShortest) return invalidArgument("at/until", "at has to be before until");
    return {};
}

Result<void, std::string> changeRect(NormalizedRect& rect, const ArgumentReader& arguments, Kind kind) {
    if (arguments.member("rect") == nullptr) return {};
    const auto given = rectArgument(arguments);
    if (!given) return missingRect(kind);
    rect = *given;
    return {};
}

Result<void, std::string> changeTarget(std::optional<EffectTarget>& present, const ArgumentReader& arguments) {
    auto changed = target(arguments, present);
    if (!changed) return failure(changed.error());
    present = std::move(*changed);
    return {};
}

Result<void, std::string> changeNumber(double& value, const ArgumentReader& arguments, const char* name, double low,
                                       double high) {
    const auto given = rangedNumber(arguments, name, low, high);
    if (!given) return failure(given.error());
    value = given->value_or(value);
    return {};
}

Result<void, std::string> change(FocusKeyframe& key, const ArgumentReader& arguments) {
    if (auto changed = changeRect(key.rect, arguments, Kind::Focus); !changed) return changed;
    if (const auto fadeOut = arguments.number("fade_out"))
        key.fadeOutDuration = std::clamp(Seconds(*fadeOut), 0_s, key.endTime - key.startTime);
    return changeTarget(key.target, arguments);
}

Result<void, std::string> change(MaskKeyframe& key, const ArgumentReader& arguments) {
    if (auto changed = changeRect(key.rect, arguments, Kind::Mask); !changed) return changed;
    return changeNumber(key.blurRadius, arguments, "blur_radius", kLeastBlur, kMostBlur);
}

Result<void, std::string> change(TapTapKeyframe& key, const ArgumentReader& arguments) {
    key.x = std::clamp(arguments.number("x").value_or(key.x), 0.0, 1.0);
    key.y = std::clamp(arguments.number("y").value_or(key.y), 0.0, 1.0);
    if (auto changed = changeNumber(key.size, arguments, "size", kLeastSize, kMostSize); !changed) return changed;
    return changeTarget(key.target, arguments);
}

/// Changes the annotation of that id in one of the tracks; nothing where the track doesn't hold it.
template <class Key>
std::optional<ToolOutcome> updateIn(std::vector<Key>& track, Kind kind, const UUID& id, const EditedProject& project,
                                    const ArgumentReader& arguments) {
    const auto key = std::ranges::find(track, id, &Key::id);
    if (key == track.end()) return std::nullopt;
    if (const auto strange = strangeFields(arguments, kind); !strange.empty())
        return refusal(HeadlessEditError(
            HeadlessEditError::FieldsNotApplicable{fmt::format("{}", fmt::join(strange, ", ")), word(kind)}));
    if (const auto changed = changeSpan(*key, project, arguments); !changed) return failure(changed.error());
    if (const auto changed = change(*key, arguments); !changed) return failure(changed.error());
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
    const std::string text = arguments.text("id").value_or("");
    const auto id = UUID::parse(text);
    if (!id) return invalidArgument("id", "expected an id from describe_project");
    EditPayload& edit = project.edit;
    if (auto done = updateIn(edit.focusKeyframes, Kind::Focus, *id, project, arguments)) return *done;
    if (auto done = updateIn(edit.maskKeyframes, Kind::Mask, *id, project, arguments)) return *done;
    if (auto done = updateIn(edit.tapTapKeyframes, Kind::TapTap, *id, project, arguments)) return *done;
    return refusal(HeadlessEditError(HeadlessEditError::UnknownAnnotation{text}));
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
