#include "agent/HeadlessEditError.h"

#include <fmt/format.h>

#include "timeline/SpanEdits.h"
#include "timeline/TrackLimits.h"

namespace morvelin {

namespace {

using Error = HeadlessEditError;

struct Describe {
    std::string operator()(const Error::OutsideTimeline& error) const {
        return fmt::format("{:.2f}s is outside this recording, which is {:.2f}s long.", error.time.value,
                           error.duration.value);
    }
    std::string operator()(const Error::SpeedOutOfRange& error) const {
        return fmt::format("Speed {:.2f}× is out of range ({:.1f}×–{:.0f}×).", error.speed, kSlowestSpeed,
                           kFastestSpeed);
    }
    std::string operator()(const Error::ZoomOutOfRange& error) const {
        return fmt::format("Zoom {:.2f}× is out of range (1×–10×).", error.factor);
    }
    std::string operator()(const Error::ZoomOverlap& error) const {
        const std::string free = error.freeUntil ? fmt::format("from {:.2f}s to {:.2f}s", error.freeFrom.value,
                                                               error.freeUntil->value)
                                                 : fmt::format("from {:.2f}s on", error.freeFrom.value);
        return fmt::format("A ramp over {:.2f}s–{:.2f}s would overlap another. The zoom track is free there {}: fit "
                           "the ramp inside, or move or remove its neighbour (describe_project lists them).",
                           error.start.value, error.end.value, free);
    }
    std::string operator()(const Error::UnknownBackground& error) const {
        return fmt::format("Unknown background “{}”. Use a name from describe_project's backgrounds, or a colour as "
                           "#RRGGBB.",
                           error.name);
    }
    std::string operator()(const Error::UnknownTapTapStyle& error) const {
        return fmt::format("Unknown tap-tap style “{}”. Use “pointer” or “glove”.", error.name);
    }
    std::string operator()(const Error::UnknownZoom& error) const {
        return fmt::format("No zoom with id {}. Call describe_project for the zooms on this project.", error.id);
    }
    std::string operator()(const Error::PullBackOwnsNoPositionKeys& error) const {
        return fmt::format("This zoom goes to {}×: a zoom that does not zoom in frames the whole capture and owns no "
                           "position keys to rebuild.",
                           error.factor);
    }
    std::string operator()(const Error::UnknownPositionKey& error) const {
        return fmt::format("No position key with id {}. Call describe_project for the position keys on this project.",
                           error.id);
    }
    std::string operator()(const Error::PositionKeyTooClose& error) const {
        return fmt::format("A position key already sits within {:.2f}s of {:.2f}s. Move that one instead.",
                           kLeastKeyGap.value, error.time.value);
    }
    std::string operator()(const Error::UnknownAnnotation& error) const {
        return fmt::format("No annotation with id {}. Call describe_project for the ones on this project.", error.id);
    }
    std::string operator()(const Error::FieldsNotApplicable& error) const {
        return fmt::format("A {} has no {}. Call describe_project to see which fields each annotation has.", error.kind,
                           error.fields);
    }
    std::string operator()(const Error::BackgroundImageUnreadable& error) const {
        return fmt::format("“{}” is not an image Morvelin can read (PNG, JPEG, HEIC…).", error.path);
    }
    std::string operator()(const Error::UnknownVersion& error) const {
        return fmt::format("No version “{}”. Call list_versions for the ones on this project.", error.name);
    }
    std::string operator()(const Error::VersionRename& error) const { return error.text; }
    std::string operator()(const Error::VersionDelete& error) const { return error.text; }
    std::string operator()(const Error::SettingOutOfRange& error) const {
        return fmt::format("{} {:.2f} is out of range ({:.2f}–{:.2f}).", error.name, error.value, error.low,
                           error.high);
    }
    std::string operator()(const Error::EmptyTimeline&) const { return "This project has no timeline yet."; }
    std::string operator()(const Error::SpanTooShort&) const {
        return "That span is too short to be a separate piece of the timeline.";
    }
    std::string operator()(const Error::WouldEmptyTimeline&) const {
        return "That would remove the whole recording. Cut a shorter span.";
    }
    std::string operator()(const Error::EmptyNarration&) const { return "Narration text is empty."; }
    std::string operator()(const Error::StartZoomIsFixed&) const {
        return "The opening zoom key sits at 0s with no ramp: its level can change, its timing cannot.";
    }
    std::string operator()(const Error::FirstZoomCannotBeDeleted&) const {
        return "The first zoom sets the level the video opens on and cannot be removed. Set its factor to 1 instead.";
    }
    std::string operator()(const Error::NoSeamBeforeFirstZoom&) const {
        return "The first zoom sets the level the video opens on: there is no zoom before it to share a seam with. "
               "Roll the seam of the zoom after it instead.";
    }
    std::string operator()(const Error::FirstPositionKeyIsFixed&) const {
        return "The first position key anchors the track: it can be re-aimed but not moved in time or removed.";
    }
    std::string operator()(const Error::TimelineHasManualEdits&) const {
        return "The zoom or position track has hand edits that a rebuild would throw away. Pass force: true to rebuild "
               "anyway, or rebuild: false to only store the settings.";
    }
    std::string operator()(const Error::NoCamera&) const { return "This recording has no camera track."; }
    std::string operator()(const Error::NoVersions&) const { return "This project has no versions to work with."; }
};

} // namespace

std::string HeadlessEditError::description() const { return std::visit(Describe{}, m_reason); }

} // namespace morvelin
