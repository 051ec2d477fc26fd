// Neighbouring position keys that hold one view: the position lane shows them joined and moves them together.
#pragma once

#include <optional>
#include <set>
#include <vector>

#include "core/Keyframes.h"

namespace morvelin {

/// Derived from the track on every redraw, never stored.
struct PositionSelectionChain {
    std::set<UUID> selectedIDs;          ///< the keys that move together with the selected one, itself included
    std::optional<UUID> nextDifferentID; ///< the first key after them, which is aimed elsewhere

    bool operator==(const PositionSelectionChain&) const = default;
};

/// Whether two keys that follow each other are shown joined: their targets differ by 0.0001 at most on each axis.
[[nodiscard]] bool areJoined(const PositionKeyframe& key, const PositionKeyframe& next);

/// The chain that holds a key; nothing for an unknown one.
[[nodiscard]] std::optional<PositionSelectionChain> positionSelectionChain(std::vector<PositionKeyframe> positions,
                                                                           const UUID& selected);

} // namespace morvelin
