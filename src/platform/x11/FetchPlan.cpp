#include "platform/x11/FetchPlan.h"

#include <cstdint>
#include <limits>

namespace morvelin {

namespace {

/// A request of its own (both sides' bookkeeping, about 15 µs) costs as much as copying and comparing this many pixels.
constexpr std::int64_t kRequestCost = 16'000;
constexpr std::size_t kMostRequests = 32;

std::int64_t area(const PixelBox& box) { return std::int64_t{box.width} * box.height; }

/// Pixels fetched more when one request for both boxes takes the place of two.
std::int64_t mergeCost(const PixelBox& a, const PixelBox& b) { return area(a.united(b)) - area(a) - area(b); }

struct Partner {
    std::size_t index = 0;
    std::int64_t cost = std::numeric_limits<std::int64_t>::max();
};

Partner cheapestPartner(const std::vector<PixelBox>& plan, const PixelBox& box, std::size_t count) {
    Partner best;
    for (std::size_t index = 0; index < count; ++index)
        if (const std::int64_t cost = mergeCost(plan[index], box); cost < best.cost) best = {index, cost};
    return best;
}

/// A merged box may have come close to an earlier one: tries again until nothing merges.
void mergeAmongThemselves(std::vector<PixelBox>& plan) {
    for (std::size_t index = plan.size(); index-- > 1;) {
        const Partner partner = cheapestPartner(plan, plan[index], index);
        if (partner.cost > kRequestCost) continue;
        plan[partner.index] = plan[partner.index].united(plan[index]);
        plan.erase(plan.begin() + static_cast<std::ptrdiff_t>(index));
        index = plan.size();
    }
}

} // namespace

std::vector<PixelBox> planFetch(std::span<const PixelBox> drawn) {
    std::vector<PixelBox> plan;
    PixelBox around;
    for (const PixelBox& box : drawn) {
        if (box.isEmpty()) continue;
        around = around.united(box);
        const Partner partner = cheapestPartner(plan, box, plan.size());
        if (!plan.empty() && (partner.cost <= kRequestCost || plan.size() == kMostRequests))
            plan[partner.index] = plan[partner.index].united(box);
        else
            plan.push_back(box);
    }
    mergeAmongThemselves(plan);

    std::int64_t total = 0;
    for (const PixelBox& box : plan) total += area(box);
    if (total > area(around)) return {around};
    return plan;
}

} // namespace morvelin
