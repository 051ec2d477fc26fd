#include "capture/FrameRateControl.h"

namespace morvelin {

std::optional<Seconds> FrameRateControl::recorded(HostTime now, Seconds work) {
    if (!m_secondStart) m_secondStart = now - work;
    ++m_frames;
    m_work += work;
    const Seconds length = now - *m_secondStart;
    if (length < Seconds(1)) return std::nullopt;
    const auto changed = judge(length);
    m_secondStart = now;
    m_frames = 0;
    m_work = {};
    return changed;
}

/// Judges the frames of a stretch of at least a second.
std::optional<Seconds> FrameRateControl::judge(Seconds length) {
    // Where frames come now and then there is time enough for each.
    const bool isBusy = m_work > kOverload * length;
    const double share = (m_work / m_frames) / interval();
    m_overloadedSeconds = isBusy && share > kOverload ? m_overloadedSeconds + 1 : 0;
    if (m_overloadedSeconds >= kPatience && m_rate + 1 < kRates.size()) return change(m_rate + 1);

    const bool couldBeFaster = m_rate > 0 && m_work / m_frames < kEase * Seconds(1 / kRates[m_rate - 1]);
    m_easySeconds = couldBeFaster ? m_easySeconds + 1 : 0;
    if (m_easySeconds >= kEasePatience) return change(m_rate - 1);
    return std::nullopt;
}

std::optional<Seconds> FrameRateControl::change(std::size_t rate) {
    m_rate = rate;
    m_lowest = std::max(m_lowest, rate);
    m_overloadedSeconds = 0;
    m_easySeconds = 0;
    return interval();
}

} // namespace morvelin
