#include "render/PerformanceProfile.h"

#include "core/base/Text.h"

namespace morvelin {

namespace {

using Tier = PerformanceProfile::Tier;

/// Decoding two movies and composing in time takes about three cores; on battery a fast machine has to spare as much
/// again.
constexpr int kCoresOfFull = 4;
constexpr int kCoresOfFullOnBattery = 8;

std::optional<Tier> tierNamed(std::string_view text) {
    const std::string word = caseFolded(text);
    if (word == "low") return Tier::Low;
    if (word == "full") return Tier::Full;
    return std::nullopt;
}

} // namespace

PerformanceProfile PerformanceProfile::of(const MachineFacts& machine, std::string_view forced) {
    const int wanted = machine.isOnACPower ? kCoresOfFull : kCoresOfFullOnBattery;
    const Tier ofMachine = machine.performanceCores >= wanted ? Tier::Full : Tier::Low;
    const auto forcedTier = tierNamed(forced);
    return {forcedTier.value_or(ofMachine), forcedTier};
}

} // namespace morvelin
