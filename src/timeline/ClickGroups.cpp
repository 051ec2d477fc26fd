#include "timeline/ClickGroups.h"

#include <algorithm>

#include "timeline/Tolerance.h"

namespace morvelin {

RampTiming::RampTiming(const EditingSettings& settings)
    : anticipation(std::max(settings.clickAnticipation, 0_s)),
      lead(std::max(anticipation, settings.zoomTransitionTime + settings.clickAnticipation)),
      rampOut(std::max(settings.zoomTransitionTime, 0.01_s)),
      idle(std::max(settings.dezoomAfterInactivity, 0_s)),
      minRamp(std::max(settings.zoomTransitionTime, 0_s) * 0.3) {}

bool ClickGroup::hasRamp() const { return !atMost(plan.transition, 0_s); }

namespace {

/// Two groups share the gap between them evenly, the anticipation included; no ramp starts before time 0.
ZoomEngine::RampPlan rampPlan(EditTime first, std::optional<EditTime> previousLast, const RampTiming& timing) {
    Seconds room = timing.lead;
    if (previousLast) room = std::min(room, (timing.anticipation + (first - *previousLast)) * 0.5);
    room = std::min(room, first.sinceZero());
    return {first - room, room - timing.anticipation};
}

bool collides(const ZoomEngine::RampPlan& plan, const ZoomEngine::RampPlan& previous, const RampTiming& timing) {
    return !atLeast(plan.zoomStart - plan.transition, previous.zoomStart) || !atLeast(plan.transition, timing.minRamp);
}

/// The click that ends the chain of close clicks that begins at `begin`; each follows the one before closely, so a
/// chain has no greatest length.
std::size_t endOfChain(std::span<const ClickPing> clicks, std::size_t begin, Seconds closest) {
    std::size_t end = begin + 1;
    while (end < clicks.size() && atMost(clicks[end].time - clicks[end - 1].time, closest)) ++end;
    return end;
}

} // namespace

/// A group's plan depends on its first click and on the click before that alone, so a merge leaves every other plan as
/// it is: one pass finds what planning anew after each merge would find.
std::vector<ClickGroup> clickGroups(std::span<const ClickPing> clicks, const RampTiming& timing) {
    std::vector<ClickGroup> groups;
    std::optional<std::size_t> previous; // the last group that has a ramp
    for (std::size_t begin = 0, end = 0; begin < clicks.size(); begin = end) {
        end = endOfChain(clicks, begin, timing.anticipation);
        const auto before = begin > 0 ? std::optional(clicks[begin - 1].time) : std::nullopt;
        const ClickGroup group{clicks.subspan(begin, end - begin), rampPlan(clicks[begin].time, before, timing)};

        if (group.hasRamp() && previous && collides(group.plan, groups[*previous].plan, timing)) {
            groups.resize(*previous + 1);
            std::span<const ClickPing>& merged = groups.back().clicks;
            merged = {merged.data(), clicks.data() + end};
            continue;
        }
        groups.push_back(group);
        if (group.hasRamp()) previous = groups.size() - 1;
    }
    return groups;
}

} // namespace morvelin
