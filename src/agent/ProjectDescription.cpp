#include "agent/ProjectDescription.h"

#include <algorithm>

#include "agent/CommandTable.h"
#include "agent/SoundDescriptions.h"
#include "agent/StyleDescription.h"
#include "agent/TrackDescriptions.h"
#include "core/base/Rounding.h"
#include "render/BackgroundPresets.h"
#include "timeline/ClickPings.h"
#include "timeline/PositionKeys.h"
#include "timeline/PositionTrack.h"
#include "timeline/ZoomTrack.h"

namespace morvelin {

namespace {

constexpr Seconds kShortestSpan = 0.001_s;
constexpr Seconds kEdgeTolerance = 0.000001_s;

/// A span of the edit, both of its ends known.
struct Window {
    EditTime from;
    EditTime until;

    [[nodiscard]] bool touches(const DescribedMoment& moment) const {
        return moment.start <= until + kEdgeTolerance && moment.end >= from - kEdgeTolerance;
    }
};

/// A zoom holds, and the camera travels between two keys: what lies next to the span decides what the span shows.
enum class Neighbours { LeftOut, Kept };

struct Track {
    const char* name;
    DescribedTrack moments;
    Neighbours neighbours = Neighbours::LeftOut;
};

/// All records of a track, or those that touch the window and, where asked, the nearest one on either side.
JSONValue listed(const Track& track, const std::optional<Window>& window) {
    const DescribedTrack& moments = track.moments;
    const auto isOutside = [&](const DescribedMoment& moment) { return window && !window->touches(moment); };
    const DescribedMoment* before = nullptr;
    const DescribedMoment* after = nullptr;
    if (window && track.neighbours == Neighbours::Kept)
        for (const DescribedMoment& moment : moments) {
            if (!isOutside(moment)) continue;
            if (moment.start < window->from) before = &moment;
            if (moment.start > window->until && after == nullptr) after = &moment;
        }
    JSONValue list = JSONValue::array();
    for (const DescribedMoment& moment : moments)
        if (!isOutside(moment) || &moment == before || &moment == after) list.push_back(moment.record);
    return list;
}

std::vector<Track> tracksOf(const ProjectSnapshot& project, const FragmentMap& fragments) {
    const EditPayload& edit = project.edit();
    std::vector<Track> tracks{
        {"fragments", describeFragments(fragments)},
        {"click_landmarks", describeClicks(clickPings(project.presses, fragments))},
        {"zooms", describeZooms(edit), Neighbours::Kept},
        {"positions", describePositions(edit), Neighbours::Kept},
        {"annotations", describeAnnotations(edit)},
        {"narration", project.transcript ? describeNarration(*project.transcript, fragments) : DescribedTrack{}}};
    return tracks;
}

Result<std::optional<Window>, std::string> windowOf(DescriptionSpan span, Seconds duration) {
    if (!span.isGiven()) return std::optional<Window>();
    const Window window{span.from.value_or(EditTime()), span.until.value_or(EditTime(duration))};
    if (window.until - window.from < kShortestSpan) return invalidArgument("from/until", "from has to be before until");
    return std::optional(window);
}

JSONValue describeWindow(const Window& window, const EditPayload& edit, const std::vector<Track>& tracks) {
    const Seconds duration = FragmentMap(edit.fragments).duration();
    const NormalizedPoint center = PositionTrack(cameraPositionKeys(edit, duration)).positionAt(window.from);
    JSONValue totals = JSONValue::object();
    for (const Track& track : tracks) totals[track.name] = track.moments.size();
    return {{"from", roundedTo3Decimals(window.from)},
            {"until", roundedTo3Decimals(window.until)},
            {"zoom_at_from", roundedTo3Decimals(ZoomTrack(edit.zoomKeyframes).zoomAt(window.from))},
            {"framed_at_from", {{"x", roundedTo3Decimals(center.x)}, {"y", roundedTo3Decimals(center.y)}}},
            {"totals", std::move(totals)}};
}

JSONValue describeAutoTimeline(const EditingSettings& settings) {
    return {{"zoom_transition", roundedTo3Decimals(settings.zoomTransitionTime)},
            {"click_anticipation", roundedTo3Decimals(settings.clickAnticipation)},
            {"zoom_out_after", roundedTo3Decimals(settings.dezoomAfterInactivity)},
            {"curve", std::string(json::rawValue(settings.transitionCurve))}};
}

JSONValue describeTranscript(const std::optional<FounderSourceTranscript>& transcript) {
    if (!transcript) return {{"exists", false}};
    JSONValue record{{"exists", true}, {"segments", transcript->segments.size()}};
    if (transcript->language) record["language"] = *transcript->language;
    return record;
}

JSONValue describeIdentity(const ProjectSnapshot& project, EditorState editor, const FragmentMap& fragments) {
    return {{"name", project.bundleURL.stem().string()},
            {"path", project.bundleURL.string()},
            {"version", project.currentVersion().name},
            {"duration", roundedTo3Decimals(fragments.duration())},
            {"original_duration", roundedTo3Decimals(project.originalDuration)},
            {"clicks", project.presses.size()},
            {"open_in_editor", editor == EditorState::Open},
            {"has_camera", project.hasCamera}};
}

} // namespace

Result<JSONValue, std::string> describeProject(const ProjectSnapshot& project, DescriptionSpan span,
                                               EditorState editor) {
    const EditPayload& edit = project.edit();
    const FragmentMap fragments(edit.fragments);
    const auto window = windowOf(span, fragments.duration());
    if (!window) return failure(window.error());

    JSONValue description = describeIdentity(project, editor, fragments);
    const std::vector<Track> tracks = tracksOf(project, fragments);
    for (const Track& track : tracks) description[track.name] = listed(track, *window);
    description["auto_timeline"] = describeAutoTimeline(edit.editing.value_or(EditingSettings()));
    description["transcript"] = describeTranscript(project.transcript);
    description["narration_takes"] = describeTakes(project.narration, edit);
    description["audio_tracks"] = describeAudioTracks(edit, project.narration);
    description["style"] = describeStyle(edit, project.isCursorDrawn ? CursorOrigin::Drawn : CursorOrigin::Recorded);
    if (project.hasCamera) description["camera"] = describeCamera(edit);
    description["versions"] = describeVersions(project.versions, project.currentVersionID);
    description["backgrounds"] = BackgroundPresets::names();
    if (*window) description["window"] = describeWindow(**window, edit, tracks);
    return description;
}

JSONValue describeVersion(const ProjectVersion& version, const UUID& current) {
    return {{"id", version.id.text()},
            {"name", version.name},
            {"current", version.id == current},
            {"locked", version.isInitial}};
}

JSONValue describeVersions(const std::vector<ProjectVersion>& versions, const UUID& current) {
    JSONValue list = JSONValue::array();
    for (const ProjectVersion& version : versions) list.push_back(describeVersion(version, current));
    return list;
}

} // namespace morvelin
