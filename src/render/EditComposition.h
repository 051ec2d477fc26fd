// The edit's picture track: which moment of the recording shows when in the finished video. Owned by an export, a
// preview or a frame reader.
#pragma once

#include <cmath>
#include <span>
#include <string>
#include <vector>

#include "core/VideoFragment.h"
#include "core/base/Result.h"
#include "core/base/Time.h"
#include "platform/MovieReader.h"

namespace morvelin {

/// Why fragments and a recording make no composition.
struct FragmentCompositionError {
    enum class Kind { NoVideoTrack, CompositionFailed };

    Kind kind = Kind::CompositionFailed;

    [[nodiscard]] std::string description() const;
};

/// Fragments of the recording, end to end, each at its speed. A value; `FragmentCompositionBuilder` makes it.
class EditComposition {
public:
    /// One piece of the recording on the edit timeline; each starts exactly where the one before ends.
    struct Segment {
        EditTime start;
        EditTime end;
        SourceTime sourceStart;
        SourceTime sourceEnd;
        double speed = 1;

        bool operator==(const Segment&) const = default;
    };

    EditComposition() = default;
    explicit EditComposition(std::vector<Segment> segments) : m_segments(std::move(segments)) {}

    [[nodiscard]] const std::vector<Segment>& segments() const { return m_segments; }
    [[nodiscard]] Seconds timelineDuration() const;

    /// The moment of the recording at `t`. At a cut the later segment holds the moment; before the start and after
    /// the end the nearest moment is given, and 0 without any segment.
    [[nodiscard]] SourceTime sourceTime(EditTime t) const;
    /// The moment to ask a movie reader for, so that the frame that shows at `t` comes also where the movie's time
    /// base rounded that frame's time up. It never reaches over a cut.
    [[nodiscard]] SourceTime pictureTime(EditTime t) const;

private:
    const Segment& segmentAt(EditTime t) const;

    std::vector<Segment> m_segments;
};

namespace FragmentCompositionBuilder {

/// What is left of a piece of picture or sound at this length of its file, or less, is skipped.
inline constexpr Seconds kShortestPiece = 0.001_s;

/// A speed next to 1 leaves a piece as it is.
[[nodiscard]] inline double playedSpeed(double speed) { return std::abs(speed - 1) > 0.001 ? speed : 1; }

/// Lays the fragments out by `order`, limited to what the movie holds; one with a speed not above 0 is skipped. Without anything left the composition is empty.
Result<EditComposition, FragmentCompositionError> build(const MovieProperties& movie,
                                                        std::span<const VideoFragment> fragments);

} // namespace FragmentCompositionBuilder

} // namespace morvelin
