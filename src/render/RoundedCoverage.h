// How much of each pixel lies inside a rounded rectangle: the edges of the picture, of masks and of clipped overlays.
#pragma once

#include <cstdint>
#include <vector>

#include "render/StageGeometry.h"

namespace morvelin {

/// A weight of a sample that is wholly inside.
constexpr int kCovered = 1 << 15;

struct RoundedRectangle {
    Rectangle rect;
    double radius = 0;

    bool operator==(const RoundedRectangle&) const = default;
};

/// One row of coverage: nothing outside `begin`..`end`, one weight between `innerBegin` and `innerEnd`, and a weight
/// for each sample between.
struct CoverageRow {
    int begin = 0;
    int innerBegin = 0;
    int innerEnd = 0;
    int end = 0;
    std::uint16_t innerWeight = 0;
    std::vector<std::uint16_t> left;  ///< from `begin` to `innerBegin`
    std::vector<std::uint16_t> right; ///< from `innerEnd` to `end`

    [[nodiscard]] int weightAt(int x) const;
};

/// The rows of one plane's coverage, at most `width` samples wide; asked for in any order, quickest in a straight
/// stretch.
class Coverage {
public:
    Coverage() = default;
    /// `divisor` is 1 for a plane with a sample for each pixel. With 2 a sample weighs the pixels that its chroma
    /// stands for: two rows, and a half, a whole and a half column around its left one.
    Coverage(const RoundedRectangle& shape, int pictureWidth, int divisor);

    /// Valid until the next call.
    [[nodiscard]] const CoverageRow& row(int y);

private:
    void pixelRow(int y, CoverageRow& row) const;
    void sampleRow(int y, CoverageRow& row);
    [[nodiscard]] bool isStraight(int y) const;

    RoundedRectangle m_shape;
    int m_width = 0;
    int m_divisor = 1;
    bool m_hasStraightRow = false;
    CoverageRow m_straightRow;
    CoverageRow m_row;
    CoverageRow m_upper;
    CoverageRow m_lower;
};

/// Mixes a row into another: `below` at `x0` gets `above` as far as the coverage says. `above` and `below` hold the
/// samples from `x0` up to `x1`.
void blendCovered(const CoverageRow& coverage, int x0, int x1, const std::uint8_t* above, std::uint8_t* below);

} // namespace morvelin
