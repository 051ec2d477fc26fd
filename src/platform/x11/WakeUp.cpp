#include "platform/x11/WakeUp.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <ctime>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

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

WakeUp::WakeUp() : m_descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

WakeUp::~WakeUp() { close(m_descriptor); }

void WakeUp::raise() {
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(m_descriptor, &one, sizeof one);
}

WakeUp::Outcome WakeUp::wait(int descriptor, std::optional<HostTime> limit) {
    std::array<pollfd, 2> watched{{{m_descriptor, POLLIN, 0}, {descriptor, POLLIN, 0}}};
    timespec left{};
    if (limit) left = timespecOf(std::max(*limit - hostNow(), Seconds(0)));
    const int ready = ppoll(watched.data(), watched.size(), limit ? &left : nullptr, nullptr);
    if (ready <= 0) return Outcome::TimedOut;
    if (watched[0].revents == 0) return Outcome::Readable;
    std::uint64_t raised = 0;
    [[maybe_unused]] const ssize_t taken = read(m_descriptor, &raised, sizeof raised);
    return Outcome::Raised;
}

} // namespace morvelin
