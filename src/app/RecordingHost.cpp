#include "app/RecordingHost.h"

#include <fmt/format.h>

namespace morvelin {

namespace {

std::string nameOf(MCPRecordingRequest::Source source) {
    switch (source) {
    case MCPRecordingRequest::Source::Display: return "display";
    case MCPRecordingRequest::Source::Window: return "window";
    case MCPRecordingRequest::Source::Area: return "area";
    }
    std::unreachable();
}

/// An empty id is the default device.
std::optional<std::string> defaultDevice(bool isWanted) {
    return isWanted ? std::optional<std::string>("") : std::nullopt;
}

auto notRecording() { return failure(MCPHostError(MCPHostError::NotRecording{})); }
MCPHostError captureFailed(std::string detail) { return {MCPHostError::CaptureFailed{std::move(detail)}}; }

} // namespace

void RecordingHost::log(const std::string& sentence) const { m_services.take.log("[Morvelin] " + sentence); }

MCPRecordingStatus RecordingHost::status() {
    MCPRecordingStatus status;
    status.endedByItself = m_endedByItself;
    if (m_stage != Stage::Recording) return status;
    status.isRecording = true;
    status.isPaused = m_take->isPaused();
    status.elapsed = m_take->progress().recorded;
    status.source = m_source;
    status.isAgentDriven = true;
    return status;
}

/// Displays have names; agents want numbers. One is given to each name when it is first seen.
std::uint32_t RecordingHost::numberOf(const std::string& displayID) {
    const auto next = static_cast<std::uint32_t>(m_displayNumbers.size()) + 1;
    return m_displayNumbers.try_emplace(displayID, next).first->second;
}

std::vector<MCPDisplay> RecordingHost::displays() {
    std::vector<MCPDisplay> displays;
    const auto found = m_services.take.screen.displays();
    if (!found) return displays;
    for (const Display& each : *found)
        displays.push_back({numberOf(each.id), each.id, each.frame, each.pointPixelScale, each.isPrimary});
    return displays;
}

bool RecordingHost::canCaptureScreen() { return m_services.take.screen.displays().has_value(); }

/// A window is where it is now, wherever the take began.
std::optional<PointerSpace> RecordingHost::recordedSpace() {
    if (m_stage != Stage::Recording || !m_take->geometry()) return std::nullopt;
    const CaptureGeometry& geometry = *m_take->geometry();
    PixelBox area = geometry.area;
    if (geometry.windowID) area = m_services.take.screen.windowFrame(*geometry.windowID).value_or(area);
    return PointerSpace{area, "the recorded area"};
}

Result<CaptureTarget, MCPHostError> RecordingHost::displayNumbered(std::uint32_t id) {
    for (const MCPDisplay& display : displays())
        if (display.id == id) return CaptureTarget(DisplayTarget{display.name});
    return failure(MCPHostError(MCPHostError::DisplayNotFound{id}));
}

/// To the front with it, and the keyboard to it: an agent goes on to click and type into what it records.
Result<CaptureTarget, MCPHostError> RecordingHost::windowTitled(const std::string& title) {
    const auto windows = m_services.take.screen.windows();
    if (!windows) return failure(captureFailed(windows.error().description()));
    const DesktopWindow* window = findWindow(WindowTarget{title, {}}, *windows);
    if (window == nullptr) return failure(MCPHostError(MCPHostError::WindowNotFound{title}));
    m_services.posting.focus(window->id);
    return CaptureTarget(WindowTarget{title, window->id});
}

Result<CaptureTarget, MCPHostError> RecordingHost::targetOf(const MCPRecordingRequest& request) {
    switch (request.source) {
    case MCPRecordingRequest::Source::Display:
        return request.displayID ? displayNumbered(*request.displayID) : CaptureTarget(DisplayTarget{});
    case MCPRecordingRequest::Source::Window: return windowTitled(request.windowTitle);
    case MCPRecordingRequest::Source::Area: return CaptureTarget(AreaTarget{request.rect, {}});
    }
    std::unreachable();
}

Task<Result<void, MCPHostError>> RecordingHost::startRecording(MCPRecordingRequest request) {
    if (m_stage != Stage::Idle) co_return failure(MCPHostError(MCPHostError::AlreadyRecording{}));
    const auto target = targetOf(request);
    if (!target) co_return failure(target.error());

    m_stage = Stage::Starting;
    m_endedByItself.reset();
    m_source = nameOf(request.source);
    m_take = std::make_unique<Take>(m_services.take, Take::Options{.target = *target,
                                                                   .projectsFolder = m_services.projectsFolder,
                                                                   .kind = RecordingKind::Agent,
                                                                   .systemAudio = request.systemAudio,
                                                                   .microphone = defaultDevice(request.microphone),
                                                                   .camera = defaultDevice(request.camera)});
    m_take->onInterrupted = [this] { m_services.take.loop.spawn(endByItself()); };
    m_take->onNotice = [this](const std::string& sentence) { log(sentence); };
    const auto started = co_await m_take->start();
    if (!started) {
        m_take.reset();
        m_stage = Stage::Idle;
        co_return failure(captureFailed(started.error().detail));
    }
    m_stage = Stage::Recording;
    log("An agent records the screen");
    co_return Result<void, MCPHostError>();
}

Task<Result<MCPFinishedRecording, MCPHostError>> RecordingHost::stopRecording() {
    if (m_stage != Stage::Recording) co_return notRecording();
    co_return co_await finishTake();
}

Task<Result<MCPFinishedRecording, MCPHostError>> RecordingHost::finishTake() {
    m_stage = Stage::Finishing;
    const auto finished = co_await m_take->stop();
    m_take.reset();
    m_stage = Stage::Idle;
    if (!finished) {
        log(finished.error().description());
        co_return failure(MCPHostError(MCPHostError::NotSaved{finished.error().description()}));
    }
    log(fmt::format("The recording is saved as {}", finished->bundleURL.string()));
    co_return MCPFinishedRecording{finished->bundleURL, finished->name, finished->duration, finished->interruption};
}

/// The display went, or the disk is full: what was recorded becomes a project, as after a stop.
Task<void> RecordingHost::endByItself() {
    if (m_stage != Stage::Recording) co_return;
    const auto finished = co_await finishTake();
    if (!finished) co_return;
    m_endedByItself = *finished;
    if (finished->interruption) log(*finished->interruption);
    if (onEndedByItself) onEndedByItself(*finished);
}

Result<void, MCPHostError> RecordingHost::pauseRecording() {
    if (m_stage != Stage::Recording) return notRecording();
    m_take->pause();
    return {};
}

Result<void, MCPHostError> RecordingHost::resumeRecording() {
    if (m_stage != Stage::Recording) return notRecording();
    m_take->resume();
    return {};
}

Task<void> RecordingHost::finish() {
    constexpr Seconds kLook{0.02};
    while (m_stage != Stage::Idle) {
        if (m_stage == Stage::Recording)
            (void)co_await finishTake();
        else
            co_await m_services.take.loop.sleep(kLook);
    }
}

} // namespace morvelin
