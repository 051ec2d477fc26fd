#include "agent/TimelineTools.h"

#include "agent/HeadlessEditError.h"
#include "core/base/Rounding.h"
#include "timeline/SpanEdits.h"

namespace morvelin::TimelineTools {

namespace {

HeadlessEditError worded(const SpanRefusal& refusal) {
    switch (refusal.reason) {
    case SpanRefusal::Reason::UnknownFragment: // tools name spans, not fragments
    case SpanRefusal::Reason::EmptyTimeline: return {HeadlessEditError::EmptyTimeline{}};
    case SpanRefusal::Reason::OutsideTimeline:
        return {HeadlessEditError::OutsideTimeline{refusal.time, refusal.duration}};
    case SpanRefusal::Reason::SpanTooShort: return {HeadlessEditError::SpanTooShort{}};
    case SpanRefusal::Reason::WouldEmptyTimeline: return {HeadlessEditError::WouldEmptyTimeline{}};
    case SpanRefusal::Reason::SpeedOutOfRange: return {HeadlessEditError::SpeedOutOfRange{refusal.speed}};
    }
    std::unreachable();
}

/// Takes over what an edit gave; the rest of the result is `name` and `value`, and the length after the edit.
ToolOutcome finish(EditedProject& project, const Result<SpanEdit, SpanRefusal>& edited, const char* name,
                   std::optional<double> value = {}) {
    if (!edited) return refusal(worded(edited.error()));
    edited->tracks.storeIn(project.edit);
    return JSONValue{{name, roundedTo3Decimals(value.value_or(edited->removed.value))},
                     {"duration", roundedTo3Decimals(project.edit.duration)}};
}

} // namespace

ToolOutcome cut(EditedProject& project, const ArgumentReader& arguments) {
    const auto from = arguments.number("from");
    const auto to = arguments.number("to");
    if (!from || !to) return invalidArgument("from/to", "expected a span in seconds");
    const auto tracks = TimelineTracks::of(project.edit);
    return finish(project, morvelin::cut(tracks, EditTime(*from), EditTime(*to), project.services.ids), "removed");
}

ToolOutcome trim(EditedProject& project, const ArgumentReader& arguments) {
    const auto tracks = TimelineTracks::of(project.edit);
    const EditTime start{arguments.number("start").value_or(0)};
    const EditTime end{arguments.number("end").value_or(tracks.duration().value)};
    return finish(project, morvelin::trim(tracks, start, end, project.services.ids), "removed");
}

ToolOutcome setSpeed(EditedProject& project, const ArgumentReader& arguments) {
    const auto from = arguments.number("from");
    const auto to = arguments.number("to");
    const auto speed = arguments.number("speed");
    if (!from || !to || !speed) return invalidArgument("from/to/speed", "expected a span and a rate");
    const auto tracks = TimelineTracks::of(project.edit);
    const auto edited = morvelin::setSpeed(tracks, EditTime(*from), EditTime(*to), *speed, project.services.ids);
    return finish(project, edited, "speed", speed);
}

} // namespace morvelin::TimelineTools
