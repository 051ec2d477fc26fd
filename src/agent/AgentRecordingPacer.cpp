#include "agent/AgentRecordingPacer.h"

namespace morvelin {

void AgentRecordingPacer::start(MCPHost& host) {
    m_host = &host;
    m_isAutoPaused = false;
    m_autoPauseCount = 0;
    arm();
}

int AgentRecordingPacer::stop() {
    m_idleTimer = {};
    if (isPacing() && !isRecordingOver()) resume();
    m_isAutoPaused = false;
    m_host = nullptr;
    return std::exchange(m_autoPauseCount, 0);
}

void AgentRecordingPacer::beforeAction() {
    ++m_actionsUnderWay;
    if (!isPacing()) return;
    m_idleTimer = {};
    if (!isRecordingOver()) resume();
}

void AgentRecordingPacer::afterAction() {
    --m_actionsUnderWay;
    if (isPacing() && !isRecordingOver()) arm();
}

void AgentRecordingPacer::agentTookOver() {
    m_isAutoPaused = false;
    if (isPacing()) arm();
}

/// The clock of idleness starts anew, unless another client is in the middle of an action.
void AgentRecordingPacer::arm() {
    m_idleTimer = {};
    if (m_actionsUnderWay == 0) m_idleTimer = m_loop.after(kIdleTimeout, [this] { idle(); });
}

void AgentRecordingPacer::idle() {
    if (!isPacing() || isRecordingOver() || m_isAutoPaused || m_host->status().isPaused) return;
    if (!m_host->pauseRecording()) return;
    m_isAutoPaused = true;
    ++m_autoPauseCount;
}

void AgentRecordingPacer::resume() {
    if (std::exchange(m_isAutoPaused, false)) (void)m_host->resumeRecording();
}

/// Whether the take has ended without a word to the pacer, which then ends too.
bool AgentRecordingPacer::isRecordingOver() {
    if (m_host->status().isRecording) return false;
    m_idleTimer = {};
    m_isAutoPaused = false;
    m_host = nullptr;
    return true;
}

} // namespace morvelin
