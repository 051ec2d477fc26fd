// Where a moment of the recording plays in the edit, and back: the one place that knows how fragments lie end to end.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "core/VideoFragment.h"

namespace morvelin {

/// Fragments laid out in ascending `order` without gaps. A value; every look-up takes O(log n).
///
/// A fragment whose `speed` is not above 0 has no length and holds no moment on either clock.
class FragmentMap {
public:
    struct Span {
        VideoFragment fragment;
        EditTime start; ///< the sum of the earlier lengths
        Seconds length;

        [[nodiscard]] EditTime end() const { return start + length; }
    };

    struct SourceMoment {
        SourceTime time;
        std::size_t span; ///< index into `spans()`
    };

    FragmentMap() = default;
    explicit FragmentMap(std::vector<VideoFragment> fragments);

    [[nodiscard]] std::span<const Span> spans() const { return m_spans; }
    [[nodiscard]] bool isEmpty() const { return m_spans.empty(); }
    [[nodiscard]] Seconds duration() const { return m_duration; }

    /// When a recorded moment is seen: in the first fragment that holds it, both of its ends included (1e-9 s of
    /// slack). Nothing when the moment was cut out.
    [[nodiscard]] std::optional<EditTime> editTime(SourceTime s) const;

    /// What is seen at a moment of the edit. Spans are half open: at a cut the later fragment holds the moment, and
    /// the last one also holds its own end. Nothing before 0 or past the end.
    [[nodiscard]] std::optional<SourceMoment> sourceTime(EditTime t) const;

    /// The same for a picture that must show something: outside the edit its nearest end holds. Nothing only when no
    /// fragment has a length.
    [[nodiscard]] std::optional<SourceMoment> heldSourceTime(EditTime t) const;

private:
    /// From `from` up to the next stretch, source moments belong to this span.
    struct Stretch {
        double from;
        std::optional<std::size_t> span;
    };

    void layOut(std::vector<VideoFragment> fragments);
    void indexSourceTimes();

    std::vector<Span> m_spans;
    Seconds m_duration;
    std::vector<std::size_t> m_showing;  ///< the spans that have a length
    std::vector<EditTime> m_showingFrom; ///< their starts
    std::vector<Stretch> m_stretches;
};

} // namespace morvelin
