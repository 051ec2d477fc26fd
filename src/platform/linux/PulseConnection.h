// A connection to the sound server (PulseAudio's protocol, which PipeWire speaks too). Shared by an audio input's streams.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "core/base/Time.h"

struct pa_context;
struct pa_threaded_mainloop;
struct pa_time_event;

namespace morvelin {

/// Keeps connecting: when the server goes away, it is looked for every half second. Everything here and everything of
/// libpulse's is used with the lock held; observers are called that way, on the connection's own thread.
class PulseConnection {
public:
    class Observer {
    public:
        virtual ~Observer() = default;
        virtual void serverCame() = 0;
        virtual void serverWent() = 0;
        /// Devices came or went, or another is the default.
        virtual void devicesChanged() = 0;
    };

    class [[nodiscard]] Lock {
    public:
        explicit Lock(PulseConnection& connection);
        ~Lock();
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;

    private:
        PulseConnection& m_connection;
    };

    /// Runs an action on the connection's thread after some time, unless it goes before.
    class [[nodiscard]] Timer {
    public:
        Timer(PulseConnection& connection, Seconds delay, std::function<void()> action);
        ~Timer();
        Timer(const Timer&) = delete;
        Timer& operator=(const Timer&) = delete;

        void run() const {
            const auto action = m_action; // which may replace this timer
            action();
        }

    private:
        PulseConnection& m_connection;
        std::function<void()> m_action;
        pa_time_event* m_event;
    };

    /// `server` as libpulse names it; empty: the user's own. Begins to connect at once. Without the lock.
    explicit PulseConnection(std::string server);
    /// Without the lock, and after all observers are gone.
    ~PulseConnection();
    PulseConnection(const PulseConnection&) = delete;
    PulseConnection& operator=(const PulseConnection&) = delete;

    void add(Observer& observer) { m_observers.push_back(&observer); }
    void remove(Observer& observer) { std::erase(m_observers, &observer); }

    /// Null while the server isn't there.
    [[nodiscard]] pa_context* context() const { return m_isReady ? m_context : nullptr; }
    /// Waits until `isDone`, asked whenever `wake` was called. Never on the connection's own thread.
    bool waitUntil(const std::function<bool()>& isDone, Seconds limit);
    /// Waits until the server is there, or is known not to be; where it wasn't before, it is tried again at once.
    bool waitForServer(Seconds limit);
    void wake();
    /// What libpulse says about the last failure.
    [[nodiscard]] std::string lastError() const;

private:
    void connect();
    void disconnect();
    void reconnect();
    void contextChanged();
    void contextLost();
    void notify(void (Observer::*what)());

    std::string m_server;
    pa_threaded_mainloop* m_loop;
    pa_context* m_context = nullptr;
    bool m_isReady = false;
    int m_failures = 0;
    std::optional<Timer> m_retry;
    std::vector<Observer*> m_observers;
};

} // namespace morvelin
