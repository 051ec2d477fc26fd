#include "render/FingerBend.h"

#include <algorithm>

#include "core/base/Smoothstep.h"

namespace morvelin {

namespace {

/// Nodes of the middle line; between them it is straight.
constexpr int kNodes = 128;

/// How much of a joint's angle a place has, 0..1.
double share(const FingerJoint& joint, double along) {
    const double p = (along - joint.at + joint.reach) / (2 * joint.reach);
    return smoothstep(p);
}

} // namespace

FingerBend::FingerBend(const FingerShape& shape, double bend) : m_knuckle(shape.knuckle), m_length(shape.length) {
    for (const FingerJoint& joint : shape.joints) m_start = std::min(m_start, joint.at - joint.reach);
    const double step = (m_length - m_start) / kNodes;
    PathPoint place = m_knuckle + PathPoint{0, -m_start};
    for (int i = 0; i <= kNodes; ++i) {
        // The angles half a step on lead to the next node.
        const double along = m_start + (i + 0.5) * step;
        double turn = 0;
        double dip = 0;
        for (const FingerJoint& joint : shape.joints) {
            turn += share(joint, along) * joint.turn * bend;
            dip += share(joint, along) * joint.dip * bend;
        }
        const double outer = std::clamp((along / m_length - 0.6) / 0.4, 0.0, 1.0);
        const double width = 1 + shape.spread * bend * smoothstep(outer);
        m_nodes.push_back({place, {width * std::cos(turn), width * std::sin(turn)}});
        place = place + PathPoint{std::sin(turn), -std::cos(turn)} * (step * std::cos(dip));
    }
}

PathPoint FingerBend::operator()(PathPoint point) const {
    const double along = m_knuckle.y - point.y;
    if (along <= m_start) return point;
    const double index = (along - m_start) / (m_length - m_start) * kNodes;
    const auto i = static_cast<std::size_t>(std::min(index, kNodes - 1.0));
    const double s = index - static_cast<double>(i);
    const Node& from = m_nodes[i];
    const Node& to = m_nodes[i + 1];
    // Beyond the last node the last step goes on.
    const PathPoint side = from.side + (to.side - from.side) * std::min(s, 1.0);
    return from.place + (to.place - from.place) * s + side * (point.x - m_knuckle.x);
}

} // namespace morvelin
