#include "agent/PositionKeyTools.h"

#include "agent/EditArguments.h"
#include "agent/HeadlessEditError.h"
#include "agent/TrackDescriptions.h"
#include "timeline/FragmentMap.h"
#include "timeline/PositionKeyEdits.h"

namespace morvelin::PositionKeyTools {

namespace {

std::string worded(const PositionKeyEdits::Refusal& refused, const UUID& id, Seconds duration) {
    using Reason = PositionKeyEdits::Refusal::Reason;
    using Error = HeadlessEditError;
    switch (refused.reason) {
    case Reason::UnknownKey: return Error(Error::UnknownPositionKey{id.text()}).description();
    case Reason::TooClose: return Error(Error::PositionKeyTooClose{refused.time}).description();
    case Reason::FirstKeyIsFixed: return Error(Error::FirstPositionKeyIsFixed{}).description();
    case Reason::OutsideTimeline: return Error(Error::OutsideTimeline{refused.time, duration}).description();
    }
    std::unreachable();
}

JSONValue recordOf(const EditPayload& edit, const UUID& id) {
    return describePositions(edit, [&](const PositionKeyframe& key) { return key.id == id; }).at(0);
}

} // namespace

ToolOutcome add(EditedProject& project, const ArgumentReader& arguments) {
    const auto at = arguments.number("at");
    const auto x = fractionArgument(arguments, "x");
    const auto y = fractionArgument(arguments, "y");
    if (!at || !x || !y) return invalidArgument("at/x/y", "expected a time and a point");
    const Seconds duration = FragmentMap(project.edit.fragments).duration();
    auto added = PositionKeyEdits::addKey(project.edit.positionKeyframes, EditTime(*at), {*x, *y}, EditTime(duration),
                                          project.services.ids);
    if (!added) return failure(worded(added.error(), {}, duration));
    project.edit.positionKeyframes = std::move(added->positions);
    return recordOf(project.edit, added->id);
}

ToolOutcome update(EditedProject& project, const ArgumentReader& arguments) {
    const auto id = listedID(arguments);
    if (!id) return failure(id.error());
    PositionKeyEdits::KeyChange change;
    if (const auto time = arguments.number("time")) change.time = EditTime(*time);
    change.x = fractionArgument(arguments, "x");
    change.y = fractionArgument(arguments, "y");
    const Seconds duration = FragmentMap(project.edit.fragments).duration();
    auto updated = PositionKeyEdits::updateKey(project.edit.positionKeyframes, *id, change, EditTime(duration));
    if (!updated) return failure(worded(updated.error(), *id, duration));
    project.edit.positionKeyframes = std::move(*updated);
    return recordOf(project.edit, *id);
}

ToolOutcome remove(EditedProject& project, const ArgumentReader& arguments) {
    const auto id = listedID(arguments);
    if (!id) return failure(id.error());
    auto left = PositionKeyEdits::removeKey({project.edit.zoomKeyframes, project.edit.positionKeyframes}, *id);
    if (!left) return failure(worded(left.error(), *id, {}));
    project.edit.zoomKeyframes = std::move(left->zoom);
    project.edit.positionKeyframes = std::move(left->position);
    return JSONValue{{"removed", id->text()}};
}

} // namespace morvelin::PositionKeyTools
