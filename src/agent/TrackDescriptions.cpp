#include "agent/TrackDescriptions.h"

#include <algorithm>
#include <unordered_map>

#include "core/base/Rounding.h"
#include "timeline/PositionKeys.h"

namespace morvelin {

namespace {

/// The first key of each ramp, which is where the ramp is aimed.
std::unordered_map<UUID, const PositionKeyframe*> aims(const std::vector<PositionKeyframe>& positions) {
    std::unordered_map<UUID, const PositionKeyframe*> first;
    for (const PositionKeyframe& key : positions) {
        if (!key.zoomKeyframeID) continue;
        const auto [known, isNew] = first.emplace(*key.zoomKeyframeID, &key);
        if (!isNew && key.time < known->second->time) known->second = &key;
    }
    return first;
}

JSONValue zoomRecord(const ZoomKeyframe& zoom, const PositionKeyframe* aim) {
    JSONValue record{{"id", zoom.id.text()},
                     {"start", roundedTo3Decimals(zoom.startTime)},
                     {"transition", roundedTo3Decimals(zoom.transitionTime)},
                     {"end", roundedTo3Decimals(zoom.startTime + zoom.transitionTime)},
                     {"factor", roundedTo3Decimals(zoom.zoomFactor)}};
    if (aim != nullptr) {
        record["x"] = roundedTo3Decimals(aim->targetX);
        record["y"] = roundedTo3Decimals(aim->targetY);
    }
    return record;
}

JSONValue positionRecord(const PositionKeyframe& key) {
    JSONValue record{{"id", key.id.text()},
                     {"time", roundedTo3Decimals(key.time)},
                     {"x", roundedTo3Decimals(key.targetX)},
                     {"y", roundedTo3Decimals(key.targetY)},
                     {"framed_x", roundedTo3Decimals(key.centerX)},
                     {"framed_y", roundedTo3Decimals(key.centerY)}};
    if (key.zoomKeyframeID) record["zoom_id"] = key.zoomKeyframeID->text();
    return record;
}

JSONValue annotationRecord(const char* type, const UUID& id, EditTime start, EditTime end) {
    return {{"type", type}, {"id", id.text()}, {"at", roundedTo3Decimals(start)}, {"until", roundedTo3Decimals(end)}};
}

JSONValue rectRecord(const NormalizedRect& rect) {
    return {{"x", roundedTo3Decimals(rect.x)},
            {"y", roundedTo3Decimals(rect.y)},
            {"width", roundedTo3Decimals(rect.width)},
            {"height", roundedTo3Decimals(rect.height)}};
}

void describeTarget(JSONValue& record, const std::optional<EffectTarget>& target) {
    if (!target) return;
    if (target->label) record["label"] = *target->label;
    if (target->kind != EffectTarget::Kind::Unknown) record["target_kind"] = std::string(json::rawValue(target->kind));
}

/// Where the edit shows what was said in [from, to]: from the first to the last moment of it that is left.
std::optional<std::pair<EditTime, EditTime>> shownSpan(const FragmentMap& fragments, SourceTime from, SourceTime to) {
    std::optional<std::pair<EditTime, EditTime>> shown;
    for (const FragmentMap::Span& span : fragments.spans()) {
        const SourceTime start = std::max(from, span.fragment.sourceStart);
        const SourceTime end = std::min(to, span.fragment.sourceEnd);
        if (start >= end || span.length <= 0_s) continue;
        const auto moment = [&](SourceTime s) {
            return span.start + (s - span.fragment.sourceStart) / span.fragment.speed;
        };
        if (!shown) shown.emplace(moment(start), moment(end));
        shown->first = std::min(shown->first, moment(start));
        shown->second = std::max(shown->second, moment(end));
    }
    return shown;
}

} // namespace

DescribedTrack describeFragments(const FragmentMap& fragments) {
    DescribedTrack track;
    for (const FragmentMap::Span& span : fragments.spans())
        track.push_back({span.start,
                         span.end(),
                         {{"start", roundedTo3Decimals(span.start)},
                          {"end", roundedTo3Decimals(span.end())},
                          {"speed", roundedTo3Decimals(span.fragment.speed)}}});
    return track;
}

DescribedTrack describeClicks(const std::vector<ClickPing>& clicks) {
    DescribedTrack track;
    for (const ClickPing& click : clicks)
        track.push_back({click.time,
                         click.time,
                         {{"at", roundedTo3Decimals(click.time)},
                          {"x", roundedTo3Decimals(click.x)},
                          {"y", roundedTo3Decimals(click.y)}}});
    std::ranges::stable_sort(track, {}, &DescribedMoment::start);
    return track;
}

DescribedTrack describeZooms(const Project& project) {
    std::vector<ZoomKeyframe> zooms = project.zoomKeyframes;
    std::ranges::stable_sort(zooms, {}, &ZoomKeyframe::startTime);
    const auto aim = aims(project.positionKeyframes);
    DescribedTrack track;
    for (const ZoomKeyframe& zoom : zooms) {
        const auto found = aim.find(zoom.id);
        track.push_back({zoom.startTime, zoom.startTime + zoom.transitionTime,
                         zoomRecord(zoom, found != aim.end() ? found->second : nullptr)});
    }
    return track;
}

JSONValue describeZoom(const EditPayload& edit, const UUID& id) {
    const auto zoom = std::ranges::find(edit.zoomKeyframes, id, &ZoomKeyframe::id);
    const auto aim = aims(edit.positionKeyframes);
    const auto found = aim.find(id);
    return zoomRecord(*zoom, found != aim.end() ? found->second : nullptr);
}

DescribedTrack describePositions(const Project& project) {
    DescribedTrack track;
    for (const PositionKeyframe& key :
         refitPositionKeys(project.positionKeyframes, project.zoomKeyframes, project.padding))
        if (!key.isEphemeral) track.push_back({key.time, key.time, positionRecord(key)});
    return track;
}

JSONValue describePositions(const EditPayload& edit, const std::function<bool(const PositionKeyframe&)>& isWanted) {
    JSONValue list = JSONValue::array();
    for (const PositionKeyframe& key : refitPositionKeys(edit.positionKeyframes, edit.zoomKeyframes, edit.padding))
        if (isWanted(key)) list.push_back(positionRecord(key));
    return list;
}

JSONValue describeAnnotation(const FocusKeyframe& focus) {
    JSONValue record = annotationRecord("focus", focus.id, focus.startTime, focus.endTime);
    record["rect"] = rectRecord(focus.rect);
    record["fade_out"] = roundedTo3Decimals(focus.fadeOutDuration);
    describeTarget(record, focus.target);
    return record;
}

JSONValue describeAnnotation(const MaskKeyframe& mask) {
    JSONValue record = annotationRecord("mask", mask.id, mask.startTime, mask.endTime);
    record["rect"] = rectRecord(mask.rect);
    record["blur_radius"] = roundedTo3Decimals(mask.blurRadius);
    return record;
}

JSONValue describeAnnotation(const TapTapKeyframe& tapTap) {
    JSONValue record = annotationRecord("taptap", tapTap.id, tapTap.startTime, tapTap.endTime);
    record["x"] = roundedTo3Decimals(tapTap.x);
    record["y"] = roundedTo3Decimals(tapTap.y);
    record["size"] = roundedTo3Decimals(tapTap.size);
    describeTarget(record, tapTap.target);
    return record;
}

DescribedTrack describeAnnotations(const Project& project) {
    DescribedTrack track;
    const auto add = [&track](const auto& keys) {
        for (const auto& key : keys) track.push_back({key.startTime, key.endTime, describeAnnotation(key)});
    };
    add(project.focusKeyframes);
    add(project.maskKeyframes);
    add(project.tapTapKeyframes);
    std::ranges::stable_sort(track, {}, &DescribedMoment::start);
    return track;
}

DescribedTrack describeNarration(const FounderSourceTranscript& transcript, const FragmentMap& fragments) {
    DescribedTrack track;
    for (const TranscriptSegment& segment : transcript.segments) {
        const auto shown = shownSpan(fragments, segment.t, segment.endT);
        if (!shown) continue;
        track.push_back({shown->first,
                         shown->second,
                         {{"at", roundedTo3Decimals(shown->first)},
                          {"until", roundedTo3Decimals(shown->second)},
                          {"text", segment.text}}});
    }
    std::ranges::stable_sort(track, {}, &DescribedMoment::start);
    return track;
}

} // namespace morvelin
