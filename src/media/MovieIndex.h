// When each frame of a movie shows and where decoding can start: what makes reading exact to the frame. Owned by a
// reader.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "core/base/Time.h"

namespace morvelin {

/// One coded frame, as the container tells of it.
struct IndexedFrame {
    std::int64_t presentationTime = 0; ///< in ticks
    std::int64_t decodingTime = 0;     ///< in ticks
    bool isKeyFrame = false;
};

/// All frames of a track, numbered from 0 in the order in which they show.
class MovieIndex {
public:
    MovieIndex() = default;
    /// `end` is when the last frame ends, if known, `tick` the length of a tick. Frames may come in any order; of
    /// frames with equal times one stays.
    MovieIndex(std::vector<IndexedFrame> frames, std::int64_t end, Seconds tick);

    [[nodiscard]] bool isEmpty() const { return m_frames.empty(); }
    [[nodiscard]] std::int64_t count() const { return static_cast<std::int64_t>(m_frames.size()); }
    [[nodiscard]] const IndexedFrame& frame(std::int64_t number) const {
        return m_frames[static_cast<std::size_t>(number)];
    }
    [[nodiscard]] SourceTime startOf(std::int64_t number) const;
    /// When the next frame starts; for the last one the end of the movie.
    [[nodiscard]] SourceTime endOf(std::int64_t number) const;

    /// The frame that shows at `time`: before the first the first, after the last the last.
    [[nodiscard]] std::int64_t numberAt(SourceTime time) const;
    /// The frame that starts at exactly this tick.
    [[nodiscard]] std::optional<std::int64_t> numberOf(std::int64_t presentationTime) const;
    /// The key frame from which `number` can be decoded.
    [[nodiscard]] std::int64_t keyFrameFor(std::int64_t number) const;

    /// Frames a second of the track's fastest stretches; 0 with fewer than two frames.
    [[nodiscard]] double nominalFrameRate() const;

private:
    std::vector<IndexedFrame> m_frames;
    std::int64_t m_end = 0;
    double m_tick = 1;
};

/// Frames a second of the fastest stretches among frames that start at `starts` (seconds, growing). A steady film keeps
/// its exact rate; a recording with variable times gives a usual rate near that of its fastest twentieth, and a screen's
/// where that is no motion, or where few frames tell nothing.
[[nodiscard]] double nominalFrameRate(std::span<const double> starts);

} // namespace morvelin
