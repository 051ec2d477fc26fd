// Watches a running take and tells early what a person can still do something about: a disk that fills up, a capture that
// stands still. Owned by the take; on the main thread.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>

#include "core/base/EventLoop.h"

namespace morvelin {

/// How long a disk lasts at the rate at which a take fills it. Pure.
class DiskForecast {
public:
    /// So much is `taken` by the take, and so much is `free`, in bytes.
    void note(HostTime now, std::int64_t taken, std::int64_t free);
    /// Nothing while the take doesn't grow.
    [[nodiscard]] std::optional<Seconds> timeLeft() const;

private:
    /// The present rate is that of the last seconds.
    static constexpr Seconds kSpan{10};

    struct Note {
        HostTime time;
        std::int64_t taken = 0;
    };
    std::deque<Note> m_notes;
    std::int64_t m_free = 0;
};

class TakeWatch {
public:
    /// A capture thread that has not come round for so long stands still: it turns at least twice a second. It is seen so
    /// in two looks, since a machine that wakes from a sleep may let this thread look before the other has turned.
    static constexpr Seconds kStall{1.25};
    static constexpr int kStallLooks = 2;
    /// A disk is told of so long before it is full, and again only when it had at least twice that time in between.
    static constexpr Seconds kDiskWarning{60};

    struct Reading {
        std::optional<HostTime> lastTurn; ///< of the capture thread; nothing while paused
        std::int64_t takenBytes = 0;
        std::optional<std::int64_t> freeBytes; ///< nothing where it isn't known
    };
    using Measure = std::function<Reading()>;
    /// Takes a whole sentence for the user.
    using Tell = std::function<void(const std::string&)>;

    /// Watches until it goes.
    TakeWatch(EventLoop& loop, Measure measure, Tell tell);

private:
    void look();
    void lookAtTurns(const Reading& reading);
    void lookAtDisk(const Reading& reading);

    EventLoop& m_loop;
    Measure m_measure;
    Tell m_tell;
    DiskForecast m_forecast;
    int m_stallLooks = 0; ///< one after another
    bool m_isStalled = false;
    bool m_hasWarnedOfDisk = false;
    EventLoop::Timer m_timer;
};

} // namespace morvelin
