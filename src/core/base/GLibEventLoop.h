// The program's real loop, on GLib's default context, which a Qt application shares.
#pragma once

#include "core/base/DescriptorLoop.h"

namespace morvelin {

class GLibEventLoop final : public DescriptorLoop {
public:
    GLibEventLoop();
    ~GLibEventLoop() override;

    void post(Action action) override;
    Timer after(Seconds delay, Action action) override;
    Timer every(Seconds interval, Action action) override;
    [[nodiscard]] HostTime now() const override;
    void offload(Action work, Action done) override;
    Timer onReadable(int descriptor, Action action) override;

    /// Calls the action on the loop's thread whenever the process gets the signal (SIGINT, SIGTERM or SIGHUP).
    Timer onSignal(int signal, Action action);

    /// Runs until `quit`, which may have been called before.
    void run();
    void quit();

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace morvelin
