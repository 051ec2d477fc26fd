#include "platform/x11/HostClock.h"

#include <array>
#include <cmath>
#include <ctime>

#include <poll.h>

namespace morvelin {

namespace {

timespec timespecOf(Seconds length) {
    const double whole = std::floor(length.value);
    return {static_cast<std::time_t>(whole), static_cast<long>((length.value - whole) * 1e9)};
}

} // namespace

HostTime hostNow() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return HostTime(static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9);
}

WaitOutcome waitFor(int descriptor, const WakeUp& wakeUp, std::optional<HostTime> limit) {
    std::array<pollfd, 2> watched{{{wakeUp.descriptor().get(), POLLIN, 0}, {descriptor, POLLIN, 0}}};
    timespec left{};
    if (limit) left = timespecOf(std::max(*limit - hostNow(), Seconds(0)));
    const int ready = ppoll(watched.data(), watched.size(), limit ? &left : nullptr, nullptr);
    if (ready <= 0) return WaitOutcome::TimedOut;
    if (watched[0].revents == 0) return WaitOutcome::Readable;
    wakeUp.clear();
    return WaitOutcome::Woken;
}

} // namespace morvelin
