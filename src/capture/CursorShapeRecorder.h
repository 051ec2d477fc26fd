// Keeps what the pointer looked like during a take: each image once, and when which one showed. One for each take.
#pragma once

#include <functional>
#include <map>
#include <unordered_map>

#include "capture/CursorSilhouette.h"
#include "core/CursorEvent.h"
#include "platform/Pointer.h"

namespace morvelin {

/// The pointer's shapes of a take, with their images by shape id.
struct RecordedCursorShapes {
    CursorShapeTrack track;
    std::map<std::int64_t, Image> images;
};

/// Tells plain arrows, which a cursor style may replace, from all other pointers by their outline. On the main thread.
class CursorShapeRecorder {
public:
    /// An outline this like the system arrow's is an arrow.
    static constexpr double kArrowLikeness = 0.85;

    enum class Place { InsideCapture, OutsideCapture };

    /// Told of what is recorded, as it is.
    struct Listener {
        std::function<void(const CursorShapeTrack::Shape&, const Image&)> onShape;
        std::function<void(const CursorShapeTrack::Change&)> onChange;
    };

    /// The system's arrow becomes shape 0, whatever shows as the take starts.
    CursorShapeRecorder(PointerSource& pointer, double pointPixelScale, Listener listener = {});

    /// Notes which shape shows at `t`, when it is another than before. Outside the capture no shape is known.
    void sample(SourceTime t, Place place);

    /// What was recorded; `captureWidth` and `captureHeight` are the captured area in points.
    [[nodiscard]] RecordedCursorShapes recorded(double captureWidth, double captureHeight) const;

private:
    using ShapeID = std::int64_t;

    std::optional<ShapeID> currentShape();
    std::optional<ShapeID> registerPointer(const PointerShape& pointer);
    [[nodiscard]] CursorShapeTrack::Kind kindOf(ShapeID id, const Image& image) const;

    PointerSource& m_pointer;
    double m_pointPixelScale = 1;
    Listener m_listener;
    std::vector<CursorShapeTrack::Shape> m_shapes;
    std::vector<CursorShapeTrack::Change> m_changes;
    std::map<ShapeID, Image> m_images;
    std::unordered_map<std::uint64_t, ShapeID> m_idsByFingerprint;
    std::optional<std::optional<ShapeID>> m_lastShape;
    std::optional<std::uint64_t> m_lastCursorIdentity;
    std::optional<ShapeID> m_lastCursorID; ///< set together with the identity
    std::optional<CursorSilhouette> m_arrowSilhouette;
};

} // namespace morvelin
