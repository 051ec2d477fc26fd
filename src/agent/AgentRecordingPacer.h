// Takes an agent's thinking out of its recordings: pauses the take when the agent has been idle for a moment, resumes it
// at the next action. Owned by the command router.
#pragma once

#include "agent/MCPHost.h"
#include "core/base/EventLoop.h"

namespace morvelin {

/// All on the main thread.
class AgentRecordingPacer {
public:
    static constexpr Seconds kIdleTimeout{0.4};

    explicit AgentRecordingPacer(EventLoop& loop) : m_loop(loop) {}

    /// The host must outlive the pacing.
    void start(MCPHost& host);
    /// Gives the number of pauses that were made. A take that stands paused by the pacer goes on.
    int stop();

    /// Around every action; actions of several clients may overlap.
    void beforeAction();
    void afterAction();
    /// The agent has paused or resumed the take itself. A pause of its own is not ended by the next action.
    void agentTookOver();

    [[nodiscard]] bool isPacing() const { return m_host != nullptr; }
    [[nodiscard]] bool isAutoPaused() const { return m_isAutoPaused; }
    [[nodiscard]] int autoPauseCount() const { return m_autoPauseCount; }

private:
    void arm();
    void idle();
    void resume();
    bool isRecordingOver();

    EventLoop& m_loop;
    MCPHost* m_host = nullptr; ///< while pacing
    EventLoop::Timer m_idleTimer;
    int m_actionsUnderWay = 0;
    int m_autoPauseCount = 0;
    bool m_isAutoPaused = false;
};

} // namespace morvelin
