#include "timeline/PositionSelectionChain.h"

#include <algorithm>
#include <cmath>

#include "timeline/Tolerance.h"

namespace morvelin {

namespace {

constexpr double kSameTarget = 1e-4;

} // namespace

bool areJoined(const PositionKeyframe& key, const PositionKeyframe& next) {
    return atMost(std::abs(next.targetX - key.targetX), kSameTarget) &&
           atMost(std::abs(next.targetY - key.targetY), kSameTarget);
}

std::optional<PositionSelectionChain> positionSelectionChain(std::vector<PositionKeyframe> positions,
                                                             const UUID& selected) {
    std::ranges::stable_sort(positions, {}, &PositionKeyframe::time);
    auto first = std::ranges::find(positions, selected, &PositionKeyframe::id);
    if (first == positions.end()) return std::nullopt;
    auto next = first + 1;
    while (first != positions.begin() && areJoined(*(first - 1), *first)) --first;
    while (next != positions.end() && areJoined(*(next - 1), *next)) ++next;

    PositionSelectionChain chain;
    for (auto key = first; key != next; ++key) chain.selectedIDs.insert(key->id);
    if (next != positions.end()) chain.nextDifferentID = next->id;
    return chain;
}

} // namespace morvelin
