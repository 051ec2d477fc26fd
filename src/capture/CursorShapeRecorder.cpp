#include "capture/CursorShapeRecorder.h"

#include <bit>
#include <string_view>

namespace morvelin {

namespace {

/// 64-bit FNV-1a over words, which is plenty for the few images of a take.
class Fingerprint {
public:
    void add(std::uint64_t word) {
        constexpr std::uint64_t kPrime = 0x100000001b3;
        m_value = (m_value ^ word) * kPrime;
    }
    /// Both zeros are one.
    void add(double number) { add(number == 0 ? std::uint64_t{0} : std::bit_cast<std::uint64_t>(number)); }
    [[nodiscard]] std::uint64_t value() const { return m_value; }

private:
    std::uint64_t m_value = 0xcbf29ce484222325;
};

std::uint64_t fingerprintOf(const PointerShape& pointer) {
    Fingerprint fingerprint;
    fingerprint.add(static_cast<std::uint64_t>(pointer.image.size.width));
    fingerprint.add(static_cast<std::uint64_t>(pointer.image.size.height));
    fingerprint.add(pointer.hotSpotX);
    fingerprint.add(pointer.hotSpotY);
    for (const std::uint8_t byte : pointer.image.pixels) fingerprint.add(std::uint64_t{byte});
    return fingerprint.value();
}

} // namespace

CursorShapeRecorder::CursorShapeRecorder(PointerSource& pointer, double pointPixelScale, Listener listener)
    : m_pointer(pointer),
      m_pointPixelScale(pointPixelScale),
      m_listener(std::move(listener)) {
    const auto arrow = pointer.arrow();
    if (!arrow || arrow->image.isEmpty()) return;
    m_arrowSilhouette = CursorSilhouette::of(arrow->image);
    registerPointer(*arrow);
}

void CursorShapeRecorder::sample(SourceTime t, Place place) {
    const auto shape = place == Place::InsideCapture ? currentShape() : std::nullopt;
    if (m_lastShape && *m_lastShape == shape) return;
    m_lastShape = shape;
    m_changes.push_back({t, shape});
    if (m_listener.onChange) m_listener.onChange(m_changes.back());
}

/// The image is looked at only when the system shows another pointer object than at the sample before.
std::optional<CursorShapeRecorder::ShapeID> CursorShapeRecorder::currentShape() {
    const auto identity = m_pointer.shapeIdentity();
    if (!identity) return std::nullopt;
    if (identity == m_lastCursorIdentity && m_lastCursorID) return m_lastCursorID;
    const auto pointer = m_pointer.shape();
    if (!pointer) return std::nullopt;
    m_lastCursorIdentity = pointer->identity;
    m_lastCursorID = registerPointer(*pointer);
    return m_lastCursorID;
}

std::optional<CursorShapeRecorder::ShapeID> CursorShapeRecorder::registerPointer(const PointerShape& pointer) {
    if (pointer.image.isEmpty()) return std::nullopt;
    const auto id = static_cast<ShapeID>(m_shapes.size());
    const auto [known, isNew] = m_idsByFingerprint.try_emplace(fingerprintOf(pointer), id);
    if (!isNew) return known->second;
    m_shapes.push_back({.id = id,
                        .kind = kindOf(id, pointer.image),
                        .width = pointer.width / m_pointPixelScale,
                        .height = pointer.height / m_pointPixelScale,
                        .hotSpotX = pointer.hotSpotX / m_pointPixelScale,
                        .hotSpotY = pointer.hotSpotY / m_pointPixelScale});
    m_images.emplace(id, pointer.image);
    if (m_listener.onShape) m_listener.onShape(m_shapes.back(), pointer.image);
    return id;
}

CursorShapeTrack::Kind CursorShapeRecorder::kindOf(ShapeID id, const Image& image) const {
    using enum CursorShapeTrack::Kind;
    if (id == 0) return Arrow;
    if (!m_arrowSilhouette) return Other;
    return CursorSilhouette::of(image).likeness(*m_arrowSilhouette) >= kArrowLikeness ? Arrow : Other;
}

RecordedCursorShapes CursorShapeRecorder::recorded(double captureWidth, double captureHeight) const {
    CursorShapeTrack track;
    track.captureWidth = captureWidth;
    track.captureHeight = captureHeight;
    track.shapes = m_shapes;
    track.changes = m_changes;
    return {std::move(track), m_images};
}

} // namespace morvelin
