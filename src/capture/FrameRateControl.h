// How many frames a second a take records: fewer when the machine can't keep up, so that they come evenly instead of
// being lost at random. A value of the capture thread.
#pragma once

#include <array>
#include <optional>

#include "core/base/Time.h"

namespace morvelin {

/// Judges by whole seconds: a single frame that takes long, as when a window opens, is no overload.
class FrameRateControl {
public:
    static constexpr std::array<double, 3> kRates{60, 30, 15};
    /// Work that takes more than this share of the time between two frames is too much,
    static constexpr double kOverload = 0.9;
    /// and for so many seconds it is too much for good.
    static constexpr int kPatience = 2;
    /// A higher rate comes back when its frames would take less than this share for so many seconds.
    static constexpr double kEase = 0.5;
    static constexpr int kEasePatience = 10;

    /// A frame was recorded at `now`, which took `work`. Gives the time between two frames where that changes.
    std::optional<Seconds> recorded(HostTime now, Seconds work);

    [[nodiscard]] Seconds interval() const { return Seconds(1 / kRates[m_rate]); }
    /// The lowest rate that the take had.
    [[nodiscard]] double lowestRate() const { return kRates[m_lowest]; }

private:
    std::optional<Seconds> judge(Seconds length);
    std::optional<Seconds> change(std::size_t rate);

    std::size_t m_rate = 0;
    std::size_t m_lowest = 0;
    std::optional<HostTime> m_secondStart;
    int m_frames = 0; ///< of the running second
    Seconds m_work;
    int m_overloadedSeconds = 0;
    int m_easySeconds = 0;
};

} // namespace morvelin
