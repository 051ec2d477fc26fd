// How much a preview may ask of the machine it runs on. A value, made once at the start.
#pragma once

#include <optional>
#include <string_view>

#include "platform/Machine.h"

namespace morvelin {

struct PerformanceProfile {
    enum class Tier { Full, Low };

    Tier tier = Tier::Full;
    std::optional<Tier> forcedTier; ///< by the user, whatever the machine is

    /// `forced` is what `MORVELIN_PERF_PROFILE` holds: "low" or "full" in any case; any other text forces nothing.
    [[nodiscard]] static PerformanceProfile of(const MachineFacts& machine, std::string_view forced);
};

} // namespace morvelin
