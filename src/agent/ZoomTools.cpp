#include "agent/ZoomTools.h"

#include "agent/EditArguments.h"
#include "agent/HeadlessEditError.h"
#include "agent/TrackDescriptions.h"
#include "core/base/Rounding.h"
#include "timeline/AutoTimeline.h"
#include "timeline/FragmentMap.h"
#include "timeline/TrackLimits.h"
#include "timeline/ZoomPositionKeys.h"
#include "timeline/ZoomSeamRoll.h"

namespace morvelin::ZoomTools {

namespace {

namespace Edits = ZoomTrackEdits;
using Edits::Refusal;

/// What the refused call was about, for sentences that name it.
struct Call {
    UUID id;
    Seconds duration;
};

std::string worded(const Refusal& refused, const Call& call) {
    using Reason = Refusal::Reason;
    using Error = HeadlessEditError;
    switch (refused.reason) {
    case Reason::UnknownZoom: return Error(Error::UnknownZoom{call.id.text()}).description();
    case Reason::FactorOutOfRange: return Error(Error::ZoomOutOfRange{refused.factor}).description();
    case Reason::OutsideTimeline: return Error(Error::OutsideTimeline{refused.start, call.duration}).description();
    case Reason::Overlap:
        return Error(Error::ZoomOverlap{refused.start, refused.end, refused.free.from, refused.free.until})
            .description();
    case Reason::StartZoomIsFixed: return Error(Error::StartZoomIsFixed{}).description();
    case Reason::FirstZoomCannotBeDeleted: return Error(Error::FirstZoomCannotBeDeleted{}).description();
    case Reason::NoSeamBeforeFirstZoom: return Error(Error::NoSeamBeforeFirstZoom{}).description();
    case Reason::NoRoomForSeam:
        return "The ramps on both sides leave the boundary no room to move. Shorten one of them first.";
    case Reason::PullBackOwnsNoPositionKeys:
        return Error(Error::PullBackOwnsNoPositionKeys{refused.factor}).description();
    case Reason::NoHold: return "This zoom holds for no time at all, so there is nothing to frame.";
    }
    std::unreachable();
}

ZoomTracks tracksOf(const EditPayload& edit) { return {edit.zoomKeyframes, edit.positionKeyframes}; }

void store(EditPayload& edit, ZoomTracks tracks) {
    edit.zoomKeyframes = std::move(tracks.zoom);
    edit.positionKeyframes = std::move(tracks.position);
}

Seconds durationOf(const EditPayload& edit) { return FragmentMap(edit.fragments).duration(); }

ToolOutcome clear(EditedProject& project) {
    const auto ramps = std::ranges::count_if(project.edit.zoomKeyframes,
                                             [](const ZoomKeyframe& zoom) { return !isOpening(zoom); });
    store(project.edit, Edits::withoutZooms(tracksOf(project.edit), project.services.ids));
    return JSONValue{{"cleared", ramps}, {"zooms", 0}};
}

} // namespace

ToolOutcome set(EditedProject& project, const ArgumentReader& arguments) {
    if (arguments.flag("clear", false)) return clear(project);
    const auto at = arguments.number("at");
    const auto factor = arguments.number("factor");
    if (!at || !factor) return invalidArgument("at/factor", "expected a time and a zoom level, or clear: true");
    const auto aim = focalPoint(arguments);
    if (!aim) return failure(aim.error());
    const auto curve = curveArgument(arguments);
    if (!curve) return failure(curve.error());

    Edits::NewZoom zoom{EditTime(*at), *factor, Edits::NewZoom{}.transition,
                        curve->value_or(ZoomTransitionType::Smooth), *aim};
    if (const auto transition = arguments.number("transition")) zoom.transition = Seconds(*transition);
    const Seconds duration = durationOf(project.edit);
    auto inserted = Edits::insertZoom(tracksOf(project.edit), zoom, EditTime(duration), project.services.ids);
    if (!inserted) return failure(worded(inserted.error(), {{}, duration}));
    store(project.edit, std::move(inserted->tracks));
    return describeZoom(project.edit, inserted->id);
}

ToolOutcome update(EditedProject& project, const ArgumentReader& arguments) {
    const auto id = listedID(arguments);
    if (!id) return failure(id.error());
    const auto aim = focalPoint(arguments);
    if (!aim) return failure(aim.error());
    const auto curve = curveArgument(arguments);
    if (!curve) return failure(curve.error());

    Edits::ZoomChange change;
    if (const auto start = arguments.number("start")) change.start = EditTime(*start);
    if (const auto transition = arguments.number("transition")) change.transition = Seconds(*transition);
    change.factor = arguments.number("factor");
    change.curve = *curve;
    change.aim = *aim;
    const Seconds duration = durationOf(project.edit);
    auto updated = Edits::updateZoom(tracksOf(project.edit), *id, change, EditTime(duration), project.services.ids);
    if (!updated) return failure(worded(updated.error(), {*id, duration}));
    store(project.edit, std::move(*updated));
    return describeZoom(project.edit, *id);
}

ToolOutcome remove(EditedProject& project, const ArgumentReader& arguments) {
    const auto id = listedID(arguments);
    if (!id) return failure(id.error());
    const Seconds duration = durationOf(project.edit);
    auto left = Edits::removeZoom(tracksOf(project.edit), *id, EditTime(duration));
    if (!left) return failure(worded(left.error(), {*id, duration}));
    store(project.edit, std::move(*left));
    return JSONValue{{"removed", id->text()}, {"zooms", project.edit.zoomKeyframes.size()}};
}

ToolOutcome rollSeam(EditedProject& project, const ArgumentReader& arguments) {
    const auto id = listedID(arguments);
    if (!id) return failure(id.error());
    const auto to = arguments.number("to");
    if (!to) return invalidArgument("to", "expected a time in seconds");
    const Seconds duration = durationOf(project.edit);
    const auto roll = Edits::rollSeam(project.edit.zoomKeyframes, project.edit.positionKeyframes, *id, EditTime(*to),
                                      Edits::kLeastHold, EditTime(duration), project.services.ids);
    if (!roll) return failure(worded(roll.error(), {*id, duration}));
    store(project.edit, {roll->zooms, roll->positions});

    JSONValue result{{"seam", roundedTo3Decimals(roll->seam)},
                     {"previous", describeZoom(project.edit, roll->previousID)}};
    if (roll->nextID) result["zoom"] = describeZoom(project.edit, *roll->nextID);
    if (!roll->absorbed.empty()) {
        for (const UUID& absorbed : roll->absorbed) result["absorbed"].push_back(absorbed.text());
        if (roll->survivorID) result["survivor"] = roll->survivorID->text();
    }
    return result;
}

ToolOutcome rebuildPositionKeys(EditedProject& project, const ArgumentReader& arguments) {
    const auto id = listedID(arguments);
    if (!id) return failure(id.error());
    const Seconds duration = durationOf(project.edit);
    auto rebuilt = Edits::rebuildPositionKeys(*id, project.edit.zoomKeyframes, project.edit.positionKeyframes,
                                              EditTime(duration), project.services.ids);
    if (rebuilt)
        project.edit.positionKeyframes = std::move(*rebuilt);
    else if (rebuilt.error().reason != Refusal::Reason::NoHold) // which leaves nothing to frame, and nothing to change
        return failure(worded(rebuilt.error(), {*id, duration}));
    const auto isOwned = [&](const PositionKeyframe& key) { return key.zoomKeyframeID == *id; };
    return JSONValue{{"zoom", describeZoom(project.edit, *id)},
                     {"position_keys", describePositions(project.edit, isOwned)}};
}

ToolOutcome setAutoTimeline(EditedProject& project, const ArgumentReader& arguments) {
    EditingSettings settings = project.edit.editing.value_or(EditingSettings());
    const auto change = [&](Seconds& setting, const char* name, double low, double high) -> Result<void, std::string> {
        const auto given = rangedNumber(arguments, name, low, high);
        if (!given) return failure(given.error());
        if (*given) setting = Seconds(**given);
        return {};
    };
    for (const auto& changed : {change(settings.zoomTransitionTime, "zoom_transition", 0.2, 4),
                                change(settings.clickAnticipation, "click_anticipation", 0.05, 1.5),
                                change(settings.dezoomAfterInactivity, "zoom_out_after", 1, 20)})
        if (!changed) return failure(changed.error());
    const auto curve = curveArgument(arguments);
    if (!curve) return failure(curve.error());
    settings.transitionCurve = curve->value_or(settings.transitionCurve);

    EditPayload& edit = project.edit;
    const bool isRebuilt = arguments.flag("rebuild", true);
    if (isRebuilt && hasHandEdits(tracksOf(edit)) && !arguments.flag("force", false))
        return refusal(HeadlessEditError(HeadlessEditError::TimelineHasManualEdits{}));
    edit.editing = settings;
    if (isRebuilt) store(edit, rebuiltZoomTracks(project.cursorEvents, edit.fragments, settings, project.services.ids));
    return JSONValue{{"rebuilt", isRebuilt},
                     {"zoom_transition", roundedTo3Decimals(settings.zoomTransitionTime)},
                     {"click_anticipation", roundedTo3Decimals(settings.clickAnticipation)},
                     {"zoom_out_after", roundedTo3Decimals(settings.dezoomAfterInactivity)},
                     {"curve", std::string(json::rawValue(settings.transitionCurve))}};
}

} // namespace morvelin::ZoomTools
