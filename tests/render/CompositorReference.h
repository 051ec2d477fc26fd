// A slow and plain compositor to measure the fast one against: every sample on its own, in double precision, straight
// from the rules, with nothing of the fast one's code but a plan's geometry and the art itself.
#pragma once

#include <array>
#include <functional>
#include <vector>

#include "render/CompositionInstruction.h"
#include "render/Compositor.h"
#include "render/FramePlan.h"

namespace morvelin::test {

/// A plane of any numbers, repeated past its edges.
struct Grid {
    int width = 0;
    int height = 0;
    std::vector<double> values;

    Grid(int w, int h) : width(w), height(h), values(static_cast<std::size_t>(w) * static_cast<std::size_t>(h)) {}
    [[nodiscard]] double& at(int x, int y);
    [[nodiscard]] double at(int x, int y) const;
};

using Levels = std::array<double, 3>; ///< Y', Cb, Cr

class ReferenceCompositor {
public:
    explicit ReferenceCompositor(const CompositionInstruction& instruction);

    /// Three planes of levels.
    [[nodiscard]] std::array<Grid, 3> compose(const FramePlan& plan, const ShownFrames& frames,
                                              Subsampling subsampling) const;

private:
    [[nodiscard]] std::array<Grid, 3> makeStage(bool castsShadow) const;
    [[nodiscard]] Levels stageAt(const FramePlan& plan, int x, int y) const;

    const CompositionInstruction& m_instruction;
    std::array<Grid, 3> m_plain;
    std::array<Grid, 3> m_shadowed;
};

/// How far two pictures are apart.
struct Difference {
    double mean = 0;
    double share = 0; ///< of samples more than 6 levels apart
    double worst = 0;
};

[[nodiscard]] Difference difference(const std::array<Grid, 3>& reference, const Picture& picture);

} // namespace morvelin::test
