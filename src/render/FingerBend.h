// How a drawn finger bends: a chain of joints that every point of its outline follows. Used by the hands' art.
#pragma once

#include <span>
#include <vector>

#include "render/VectorPath.h"

namespace morvelin {

/// One joint of a finger that is drawn straight up, at full press.
struct FingerJoint {
    double at = 0;    ///< along the finger from its knuckle, in units of the drawing
    double reach = 0; ///< the skin bends this far to either side of it
    double turn = 0;  ///< clockwise, radians
    double dip = 0;   ///< away from the one who looks, radians; what dips looks shorter
};

struct FingerShape {
    PathPoint knuckle; ///< the finger goes straight up from here
    double length = 0; ///< from the knuckle to where it touches
    std::vector<FingerJoint> joints;
    double spread = 0; ///< by this fraction the pressed fingertip is wider
};

class FingerBend {
public:
    /// `bend` is 0 (straight) to 1 (pressed).
    FingerBend(const FingerShape& shape, double bend);

    /// Where a point of the straight finger has gone. What lies behind the knuckle stays where it is.
    [[nodiscard]] PathPoint operator()(PathPoint point) const;
    /// Where the finger touches.
    [[nodiscard]] PathPoint tip() const { return (*this)({m_knuckle.x, m_knuckle.y - m_length}); }

private:
    /// A place on the finger's middle line.
    struct Node {
        PathPoint place;
        PathPoint side; ///< to the right, as long as the finger is wider
    };

    PathPoint m_knuckle;
    double m_length;
    double m_start = 0; ///< of the first node, along the finger
    std::vector<Node> m_nodes;
};

} // namespace morvelin
