// Why an edit was refused, in the words that an agent reads.
#pragma once

#include <optional>
#include <string>
#include <variant>

#include "core/base/Time.h"

namespace morvelin {

class HeadlessEditError {
public:
    struct OutsideTimeline {
        EditTime time;
        Seconds duration;
    };
    struct SpeedOutOfRange {
        double speed = 0;
    };
    struct ZoomOutOfRange {
        double factor = 0;
    };
    struct ZoomOverlap {
        EditTime start;
        EditTime end;
        EditTime freeFrom;
        std::optional<EditTime> freeUntil; ///< absent: free to the end
    };
    struct UnknownBackground {
        std::string name;
    };
    struct UnknownTapTapStyle {
        std::string name;
    };
    struct UnknownZoom {
        std::string id;
    };
    struct PullBackOwnsNoPositionKeys {
        double factor = 1;
    };
    struct UnknownPositionKey {
        std::string id;
    };
    struct PositionKeyTooClose {
        EditTime time;
    };
    struct UnknownAnnotation {
        std::string id;
    };
    struct FieldsNotApplicable {
        std::string fields;
        std::string kind;
    };
    struct BackgroundImageUnreadable {
        std::string path;
    };
    struct UnknownVersion {
        std::string name;
    };
    /// The text of the store's own error, as it stands.
    struct VersionRename {
        std::string text;
    };
    struct VersionDelete {
        std::string text;
    };
    struct SettingOutOfRange {
        std::string name;
        double value = 0;
        double low = 0;
        double high = 0;
    };
    struct EmptyTimeline {};
    struct SpanTooShort {};
    struct WouldEmptyTimeline {};
    struct EmptyNarration {};
    struct StartZoomIsFixed {};
    struct FirstZoomCannotBeDeleted {};
    struct NoSeamBeforeFirstZoom {};
    struct FirstPositionKeyIsFixed {};
    struct TimelineHasManualEdits {};
    struct NoCamera {};
    struct NoVersions {};
    using Reason =
        std::variant<OutsideTimeline, SpeedOutOfRange, ZoomOutOfRange, ZoomOverlap, UnknownBackground,
                     UnknownTapTapStyle, UnknownZoom, PullBackOwnsNoPositionKeys, UnknownPositionKey,
                     PositionKeyTooClose, UnknownAnnotation, FieldsNotApplicable, BackgroundImageUnreadable,
                     UnknownVersion, VersionRename, VersionDelete, SettingOutOfRange, EmptyTimeline, SpanTooShort,
                     WouldEmptyTimeline, EmptyNarration, StartZoomIsFixed, FirstZoomCannotBeDeleted,
                     NoSeamBeforeFirstZoom, FirstPositionKeyIsFixed, TimelineHasManualEdits, NoCamera, NoVersions>;

    HeadlessEditError(Reason reason) : m_reason(std::move(reason)) {}

    [[nodiscard]] std::string description() const;

private:
    Reason m_reason;
};

} // namespace morvelin
