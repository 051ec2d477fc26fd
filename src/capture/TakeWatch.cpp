#include "capture/TakeWatch.h"

#include <cmath>

#include <fmt/format.h>

namespace morvelin {

namespace {

constexpr Seconds kLookInterval{0.25};

} // namespace

void DiskForecast::note(HostTime now, std::int64_t taken, std::int64_t free) {
    while (m_notes.size() > 1 && now - m_notes[1].time >= kSpan) m_notes.pop_front();
    m_notes.push_back({now, taken});
    m_free = free;
}

std::optional<Seconds> DiskForecast::timeLeft() const {
    if (m_notes.size() < 2) return std::nullopt;
    const Seconds span = m_notes.back().time - m_notes.front().time;
    const auto grown = static_cast<double>(m_notes.back().taken - m_notes.front().taken);
    if (span < Seconds(1) || grown <= 0) return std::nullopt;
    return span * (static_cast<double>(m_free) / grown);
}

TakeWatch::TakeWatch(EventLoop& loop, Measure measure, Tell tell)
    : m_loop(loop),
      m_measure(std::move(measure)),
      m_tell(std::move(tell)),
      m_timer(loop.every(kLookInterval, [this] { look(); })) {}

void TakeWatch::look() {
    const Reading reading = m_measure();
    lookAtTurns(reading);
    lookAtDisk(reading);
}

void TakeWatch::lookAtTurns(const Reading& reading) {
    const bool isLate = reading.lastTurn && m_loop.now() - *reading.lastTurn > kStall;
    m_stallLooks = isLate ? m_stallLooks + 1 : 0;
    const bool isStalled = m_stallLooks >= kStallLooks;
    if (isStalled == m_isStalled) return;
    m_isStalled = isStalled;
    m_tell(isStalled ? "The recording stands still: the screen or the encoder does not answer. What happens now is not "
                       "recorded."
                     : "The recording goes on.");
}

void TakeWatch::lookAtDisk(const Reading& reading) {
    if (!reading.freeBytes) return;
    m_forecast.note(m_loop.now(), reading.takenBytes, *reading.freeBytes);
    const auto left = m_forecast.timeLeft();
    if (!left || *left > 2 * kDiskWarning) m_hasWarnedOfDisk = false;
    if (!left || *left > kDiskWarning || std::exchange(m_hasWarnedOfDisk, true)) return;
    m_tell(fmt::format("The disk is nearly full: at this rate the recording can go on for about {} s.",
                       std::lround(left->value)));
}

} // namespace morvelin
