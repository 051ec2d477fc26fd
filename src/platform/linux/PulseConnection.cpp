#include "platform/linux/PulseConnection.h"

#include <algorithm>

#include <pulse/pulseaudio.h>

namespace morvelin {

namespace {

constexpr Seconds kRetryDelay{0.5};

pa_usec_t momentIn(Seconds delay) { return pa_rtclock_now() + static_cast<pa_usec_t>(delay.value * 1e6); }

} // namespace

PulseConnection::Lock::Lock(PulseConnection& connection) : m_connection(connection) {
    pa_threaded_mainloop_lock(m_connection.m_loop);
}

PulseConnection::Lock::~Lock() { pa_threaded_mainloop_unlock(m_connection.m_loop); }

PulseConnection::Timer::Timer(PulseConnection& connection, Seconds delay, std::function<void()> action)
    : m_connection(connection),
      m_action(std::move(action)),
      m_event(pa_context_rttime_new(
          connection.m_context, momentIn(delay),
          [](pa_mainloop_api*, pa_time_event*, const timeval*, void* timer) { static_cast<Timer*>(timer)->run(); },
          this)) {}

PulseConnection::Timer::~Timer() { pa_threaded_mainloop_get_api(m_connection.m_loop)->time_free(m_event); }

PulseConnection::PulseConnection(std::string server) : m_server(std::move(server)), m_loop(pa_threaded_mainloop_new()) {
    pa_threaded_mainloop_set_name(m_loop, "com.morvelin.so");
    connect();
    pa_threaded_mainloop_start(m_loop);
}

PulseConnection::~PulseConnection() {
    pa_threaded_mainloop_stop(m_loop);
    m_retry.reset();
    disconnect();
    pa_threaded_mainloop_free(m_loop);
}

void PulseConnection::connect() {
    m_context = pa_context_new(pa_threaded_mainloop_get_api(m_loop), "Morvelin");
    const auto changed = [](pa_context*, void* self) { static_cast<PulseConnection*>(self)->contextChanged(); };
    pa_context_set_state_callback(m_context, changed, this);
    const char* server = m_server.empty() ? nullptr : m_server.c_str();
    // The first attempt may start the user's server where that is how it is started. A failure is told to the callback.
    (void)pa_context_connect(m_context, server, m_failures == 0 ? PA_CONTEXT_NOFLAGS : PA_CONTEXT_NOAUTOSPAWN, nullptr);
}

void PulseConnection::disconnect() {
    m_isReady = false;
    pa_context_set_state_callback(m_context, nullptr, nullptr);
    pa_context_set_subscribe_callback(m_context, nullptr, nullptr);
    pa_context_disconnect(m_context);
    pa_context_unref(m_context);
    m_context = nullptr;
}

void PulseConnection::reconnect() {
    disconnect();
    connect();
}

void PulseConnection::contextChanged() {
    const pa_context_state_t state = pa_context_get_state(m_context);
    if (!PA_CONTEXT_IS_GOOD(state)) return contextLost();
    if (state != PA_CONTEXT_READY) return;
    m_isReady = true;
    m_failures = 0;
    const auto happened = [](pa_context*, pa_subscription_event_type_t event, std::uint32_t, void* self) {
        const bool isAboutServer = (event & PA_SUBSCRIPTION_EVENT_FACILITY_MASK) == PA_SUBSCRIPTION_EVENT_SERVER;
        const bool isChange = (event & PA_SUBSCRIPTION_EVENT_TYPE_MASK) == PA_SUBSCRIPTION_EVENT_CHANGE;
        // Volumes and the like change all the time; only the server's own changes matter, such as its default devices.
        if (isAboutServer || !isChange) static_cast<PulseConnection*>(self)->notify(&Observer::devicesChanged);
    };
    pa_context_set_subscribe_callback(m_context, happened, this);
    constexpr auto kNews = static_cast<pa_subscription_mask_t>(PA_SUBSCRIPTION_MASK_SERVER | PA_SUBSCRIPTION_MASK_SINK |
                                                               PA_SUBSCRIPTION_MASK_SOURCE);
    if (pa_operation* asked = pa_context_subscribe(m_context, kNews, nullptr, nullptr)) pa_operation_unref(asked);
    notify(&Observer::serverCame);
    wake();
}

void PulseConnection::contextLost() {
    ++m_failures;
    if (std::exchange(m_isReady, false)) notify(&Observer::serverWent);
    m_retry.emplace(*this, kRetryDelay, [this] { reconnect(); });
    wake();
}

/// An observer may go, or take another with it, while it is told.
void PulseConnection::notify(void (Observer::*what)()) {
    const std::vector<Observer*> told = m_observers;
    for (Observer* observer : told)
        if (std::ranges::count(m_observers, observer) > 0) (observer->*what)();
}

bool PulseConnection::waitUntil(const std::function<bool()>& isDone, Seconds limit) {
    bool isOver = false;
    const Timer timer(*this, limit, [&] {
        isOver = true;
        wake();
    });
    while (!isDone() && !isOver) pa_threaded_mainloop_wait(m_loop);
    return isDone();
}

bool PulseConnection::waitForServer(Seconds limit) {
    const int before = m_failures;
    if (before > 0) reconnect();
    waitUntil([&] { return m_isReady || m_failures > before; }, limit);
    return m_isReady;
}

void PulseConnection::wake() { pa_threaded_mainloop_signal(m_loop, 0); }

std::string PulseConnection::lastError() const { return pa_strerror(pa_context_errno(m_context)); }

} // namespace morvelin
