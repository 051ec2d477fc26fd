#include "storage/LostKeyframes.h"

#include <fmt/format.h>

#include "timeline/FragmentMap.h"
#include "timeline/TimelineKeyframes.h"

namespace morvelin::ProjectBundle {

namespace {

std::string_view missingKeys(const EditPayload& edit) {
    if (!edit.zoomKeyframes.empty()) return "position keyframes";
    return edit.positionKeyframes.empty() ? "zoom or position keyframes" : "zoom keyframes";
}

/// The pointer's track as the edit shows it: what was cut out is gone, and times are those of the finished video.
std::vector<CursorEvent> eventsOfEdit(const EditPayload& edit, std::span<const CursorEvent> cursorEvents) {
    const FragmentMap fragments(edit.fragments);
    std::vector<CursorEvent> seen;
    seen.reserve(cursorEvents.size());
    for (CursorEvent sample : cursorEvents) {
        const auto time = fragments.editTime(sample.timestamp);
        if (!time) continue;
        // From here on the edit is the take whose keys are generated.
        sample.timestamp = SourceTime(time->sinceZero());
        seen.push_back(sample);
    }
    std::ranges::stable_sort(seen, {}, &CursorEvent::timestamp);
    return seen;
}

void regenerate(EditPayload& edit, std::span<const CursorEvent> cursorEvents, IdSource& ids, const Log& log) {
    auto keyframes = timelineKeyframes(TimelineKeyframeSource::GenerateFromCursorEvents, {},
                                       eventsOfEdit(edit, cursorEvents), edit.duration,
                                       edit.editing.value_or(EditingSettings{}), ids);
    edit.zoomKeyframes = std::move(keyframes.zoom);
    edit.positionKeyframes = std::move(keyframes.position);
    edit.focusKeyframes = std::move(keyframes.focuses);
    edit.tapTapKeyframes = std::move(keyframes.tapTaps);
    log(fmt::format("[Morvelin] Generated {} zoom + {} position + {} focus + {} tap-tap keyframes",
                    edit.zoomKeyframes.size(), edit.positionKeyframes.size(), edit.focusKeyframes.size(),
                    edit.tapTapKeyframes.size()));
}

} // namespace

std::string_view label(KeyframeRepair repair) {
    switch (repair) {
    case KeyframeRepair::Regenerate: return "Regenerate Keyframes";
    case KeyframeRepair::StartWithSingleKeyframe: return "Start With a Single Keyframe";
    }
    return {};
}

std::optional<LostKeyframes> lostKeyframes(const EditPayload& edit, std::span<const CursorEvent> cursorEvents,
                                           std::string_view projectName) {
    if (!edit.zoomKeyframes.empty() && !edit.positionKeyframes.empty()) return std::nullopt;

    const std::string found = fmt::format(
        "Morvelin found no {} for “{}”. They were lost when the app quit unexpectedly.\n\n", missingKeys(edit),
        projectName);
    const bool hasClicks = std::ranges::any_of(
        cursorEvents, [](const CursorEvent& sample) { return sample.event == CursorEventType::MouseDown; });
    if (hasClicks)
        return LostKeyframes{found + "They can be rebuilt from the cursor activity recorded with this take, exactly as "
                                     "they were generated right after recording. Any keyframes you added or edited by "
                                     "hand are gone either way; your clips, effects and style settings are untouched.",
                             {KeyframeRepair::Regenerate, KeyframeRepair::StartWithSingleKeyframe}};
    return LostKeyframes{found +
                             "This take has no recorded clicks, so they can’t be rebuilt from it. A single keyframe "
                             "has been added at the start of the video. Your clips, effects and style settings are "
                             "untouched.",
                         {KeyframeRepair::StartWithSingleKeyframe}};
}

EditPayload repaired(EditPayload edit, KeyframeRepair repair, std::span<const CursorEvent> cursorEvents, IdSource& ids,
                     const Log& log) {
    if (repair == KeyframeRepair::Regenerate) regenerate(edit, cursorEvents, ids, log);
    if (edit.zoomKeyframes.empty()) edit.zoomKeyframes = {ZoomKeyframe::baseline(ids)};
    if (edit.positionKeyframes.empty()) edit.positionKeyframes = {PositionKeyframe::baseline(ids)};
    return edit;
}

} // namespace morvelin::ProjectBundle
