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

std::vector<Track> tracksOf(const ProjectSnapshot& snapshot, const FragmentMap& fragments) {
    const Project& project = snapshot.project;
    std::vector<Track> tracks{
        {"fragments", describeFragments(fragments)},
        {"click_landmarks", describeClicks(clickPings(snapshot.presses, fragments))},
        {"zooms", describeZooms(project), Neighbours::Kept},
        {"positions", describePositions(project), Neighbours::Kept},
        {"annotations", describeAnnotations(project)},
        {"narration", snapshot.transcript ? describeNarration(*snapshot.transcript, fragments) : DescribedTrack{}}};
    return tracks;
}

Result<std::optional<Window>, std::string> windowOf(DescriptionSpan span, Seconds duration) {
    if (!span.isGiven()) return std::optional<Window>();
    const Window window{span.from.value_or(EditTime()), span.until.value_or(EditTime(duration))};
    if (window.until - window.from < kShortestSpan) return invalidArgument("from/until", "from has to be before until");
    return std::optional(window);
}

JSONValue describeWindow(const Window& window, const Project& project, const std::vector<Track>& tracks) {
    const auto positions = cameraPositionKeys(project.positionKeyframes, project.zoomKeyframes, project.padding,
                                              FragmentMap(project.fragments).duration());
    const NormalizedPoint center = PositionTrack(positions).positionAt(window.from);
    JSONValue totals = JSONValue::object();
    for (const Track& track : tracks) totals[track.name] = track.moments.size();
    return {{"from", roundedTo3Decimals(window.from)},
            {"until", roundedTo3Decimals(window.until)},
            {"zoom_at_from", roundedTo3Decimals(ZoomTrack(project.zoomKeyframes).zoomAt(window.from))},
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

JSONValue describeIdentity(const ProjectSnapshot& snapshot, EditorState editor, const FragmentMap& fragments) {
    const Project& project = snapshot.project;
    return {{"name", project.bundleURL.stem().string()},
            {"path", project.bundleURL.string()},
            {"version", snapshot.contents.currentVersion().name},
            {"duration", roundedTo3Decimals(fragments.duration())},
            {"original_duration", roundedTo3Decimals(project.originalDuration)},
            {"clicks", snapshot.presses.size()},
            {"open_in_editor", editor == EditorState::Open},
            {"has_camera", project.cameraURL.has_value()}};
}

} // namespace

Result<JSONValue, std::string> describeProject(const ProjectSnapshot& snapshot, DescriptionSpan span,
                                               EditorState editor) {
    const Project& project = snapshot.project;
    const FragmentMap fragments(project.fragments);
    const auto window = windowOf(span, fragments.duration());
    if (!window) return failure(window.error());

    JSONValue description = describeIdentity(snapshot, editor, fragments);
    const std::vector<Track> tracks = tracksOf(snapshot, fragments);
    for (const Track& track : tracks) description[track.name] = listed(track, *window);
    description["auto_timeline"] = describeAutoTimeline(project.editing);
    description["transcript"] = describeTranscript(snapshot.transcript);
    description["narration_takes"] = describeTakes(snapshot.narration, project);
    description["audio_tracks"] = describeAudioTracks(project, snapshot.narration);
    description["style"] = describeStyle(project,
                                         snapshot.isCursorDrawn ? CursorOrigin::Drawn : CursorOrigin::Recorded);
    if (project.cameraURL) description["camera"] = describeCamera(project);
    description["versions"] = describeVersions(snapshot.contents.versions, snapshot.contents.currentVersionID);
    description["backgrounds"] = BackgroundPresets::names();
    if (*window) description["window"] = describeWindow(**window, project, tracks);
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
