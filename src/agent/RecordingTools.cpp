#include "agent/RecordingTools.h"

#include <cmath>

#include <fmt/format.h>

#include "agent/HeadlessEditError.h"
#include "core/base/Rounding.h"
#include "core/base/Text.h"

namespace morvelin {

namespace {

using Source = MCPRecordingRequest::Source;

constexpr auto rawValues(std::type_identity<Source>) {
    return std::to_array<std::pair<Source, std::string_view>>(
        {{Source::Display, "display"}, {Source::Window, "window"}, {Source::Area, "area"}});
}

auto hostUnavailable() { return refusal(MCPToolError(MCPToolError::HostUnavailable{})); }

Result<Source, std::string> sourceArgument(const ArgumentReader& arguments) {
    const JSONValue* given = arguments.member("source");
    if (given == nullptr) return Source::Display;
    const std::string word = arguments.text("source").value_or(given->dump());
    for (const auto& [source, name] : rawValues(std::type_identity<Source>{}))
        if (word == name) return source;
    return invalidArgument("source", fmt::format("expected display, window or area, got “{}”", word));
}

Result<PointRect, std::string> areaArgument(const ArgumentReader& arguments) {
    const JSONValue* given = arguments.member("rect");
    if (given == nullptr)
        return invalidArgument("rect", "source “area” needs a rect: there is no one to drag out a selection");
    const ArgumentReader members(*given);
    const auto x = members.number("x");
    const auto y = members.number("y");
    const auto width = members.number("width");
    const auto height = members.number("height");
    if (!x || !y || !width || !height || *width <= 0 || *height <= 0)
        return invalidArgument("rect", "expected x, y, width and height, with a positive size");
    return PointRect{*x, *y, *width, *height};
}

Result<std::optional<std::uint32_t>, std::string> displayArgument(const ArgumentReader& arguments) {
    if (arguments.member("display_id") == nullptr) return std::optional<std::uint32_t>();
    const auto id = arguments.integer("display_id");
    if (!id || *id < 0 || *id > UINT32_MAX)
        return invalidArgument("display_id", "expected a display ID from recording_status.displays");
    return std::optional(static_cast<std::uint32_t>(*id));
}

Result<MCPRecordingRequest, std::string> requestOf(const ArgumentReader& arguments) {
    MCPRecordingRequest request;
    const auto source = sourceArgument(arguments);
    if (!source) return failure(source.error());
    request.source = *source;
    if (*source == Source::Window) {
        request.windowTitle = arguments.text("window_title").value_or("");
        if (trimmed(request.windowTitle).empty())
            return invalidArgument("window_title", "source “window” needs a window_title to match");
    }
    if (*source == Source::Area) {
        const auto rect = areaArgument(arguments);
        if (!rect) return failure(rect.error());
        request.rect = *rect;
    }
    const auto display = displayArgument(arguments);
    if (!display) return failure(display.error());
    request.displayID = *display;
    request.microphone = arguments.flag("microphone", false);
    request.systemAudio = arguments.flag("system_audio", false);
    request.camera = arguments.flag("camera", false);
    return request;
}

JSONValue describe(const MCPDisplay& display) {
    return {{"id", display.id},
            {"name", display.name},
            {"width", display.frame.width / display.pointPixelScale},
            {"height", display.frame.height / display.pointPixelScale}};
}

JSONValue describe(const MCPFinishedRecording& recording) {
    JSONValue result{{"name", recording.name},
                     {"project", recording.bundleURL.string()},
                     {"duration", roundedTo3Decimals(recording.duration)}};
    if (recording.interruption) result["reason"] = *recording.interruption;
    return result;
}

} // namespace

RecordingTools::RecordingTools(Services services, AgentRecordingPacer& pacer) : m_services(services), m_pacer(pacer) {
    if (m_services.host == nullptr) return;
    m_services.host->onEndedByItself = [this](const MCPFinishedRecording& recording) {
        m_services.loop.spawn(finishEndedRecording(recording.bundleURL));
    };
}

void RecordingTools::addTo(CommandTable& commands) {
    const auto withHost = [this](ToolOutcome (RecordingTools::*tool)()) {
        return [this, tool](const ArgumentReader&) -> ToolOutcome {
            return m_services.host != nullptr ? (this->*tool)() : ToolOutcome(hostUnavailable());
        };
    };
    commands.addWaiting("start_recording", [this](JSONValue arguments) { return start(std::move(arguments)); });
    commands.addWaiting("stop_recording", [this](JSONValue arguments) { return stop(std::move(arguments)); });
    commands.add("pause_recording", withHost(&RecordingTools::pause));
    commands.add("resume_recording", withHost(&RecordingTools::resume));
    commands.add("recording_status", [this](const ArgumentReader&) -> ToolOutcome { return status(); });
    m_narrateOnDisk = commands.replace("narrate",
                                       [this](JSONValue arguments) { return narrate(std::move(arguments)); });
}

JSONValue RecordingTools::status() {
    MCPHost* host = m_services.host;
    const MCPRecordingStatus now = host != nullptr ? host->status() : MCPRecordingStatus{};
    JSONValue displays = JSONValue::array();
    if (host != nullptr)
        for (const MCPDisplay& each : host->displays()) displays.push_back(describe(each));
    JSONValue result{{"recording", now.isRecording},
                     {"paused", now.isPaused},
                     {"elapsed", static_cast<std::int64_t>(std::floor(now.elapsed.value))},
                     {"agent_driven", now.isAgentDriven},
                     {"can_control_pointer", m_services.posting != nullptr && m_services.posting->check().has_value()},
                     {"can_capture_screen", host != nullptr && host->canCaptureScreen()},
                     {"displays", std::move(displays)}};
    if (now.source) result["source"] = *now.source;
    if (now.endedByItself) result["ended_by_itself"] = describe(*now.endedByItself);
    return result;
}

Task<ToolOutcome> RecordingTools::start(JSONValue arguments) {
    if (m_isStartingRecording) co_return refusal(MCPToolError(MCPToolError::OperationInProgress{"recording start"}));
    if (m_services.host == nullptr) co_return hostUnavailable();
    const ArgumentReader reader(arguments);
    const auto request = requestOf(reader);
    if (!request) co_return failure(request.error());

    m_isStartingRecording = true;
    const auto started = co_await m_services.host->startRecording(*request);
    m_isStartingRecording = false;
    if (!started) co_return refusal(started.error());
    m_pendingNarration.clear();
    const bool isPaced = reader.flag("pace_to_actions", true);
    if (isPaced) m_pacer.start(*m_services.host);
    JSONValue result = status();
    result["paced"] = isPaced;
    result["note"] = isPaced ? "Recording pauses itself between your actions, so your thinking time is not in the "
                               "video. Use wait to put a deliberate pause in."
                             : "Recording runs continuously, including between your actions.";
    co_return result;
}

Task<ToolOutcome> RecordingTools::stop(JSONValue) {
    if (m_services.host == nullptr) co_return hostUnavailable();
    const int idleSpans = m_pacer.stop();
    const auto finished = co_await m_services.host->stopRecording();
    if (!finished) co_return refusal(finished.error());
    const auto [lines, failed] = co_await writeNarration(finished->bundleURL);
    JSONValue result = describe(*finished);
    result["next"] = "Call export to render this project, or export with for_ai set to read it back.";
    if (idleSpans > 0) result["idle_spans_removed"] = idleSpans;
    if (lines > 0) result["narration_lines"] = lines;
    if (failed > 0) result["narration_failed"] = failed;
    co_return result;
}

ToolOutcome RecordingTools::pause() {
    if (auto paused = m_services.host->pauseRecording(); !paused) return refusal(paused.error());
    m_pacer.agentTookOver();
    return status();
}

ToolOutcome RecordingTools::resume() {
    if (auto resumed = m_services.host->resumeRecording(); !resumed) return refusal(resumed.error());
    m_pacer.agentTookOver();
    return status();
}

Task<MCPToolResult> RecordingTools::narrate(JSONValue arguments) {
    const ArgumentReader reader(arguments);
    const bool isInTake = m_services.host != nullptr && m_services.host->status().isRecording;
    if (!isInTake || reader.member("at") != nullptr) co_return co_await m_narrateOnDisk(std::move(arguments));
    auto kept = keepNarration(reader);
    co_return kept ? MCPToolResult::success(std::move(*kept)) : MCPToolResult::failed(kept.error());
}

ToolOutcome RecordingTools::keepNarration(const ArgumentReader& arguments) {
    const auto text = arguments.text("text");
    if (!text) return invalidArgument("text", "expected something to say");
    if (trimmed(*text).empty()) return refusal(HeadlessEditError(HeadlessEditError::EmptyNarration{}));
    const double at = roundedTo3Decimals(m_services.host->status().elapsed);
    m_pendingNarration.push_back({trimmed(*text), at, arguments.number("duration")});
    return JSONValue{
        {"text", m_pendingNarration.back().text},
        {"at", at},
        {"pending", true},
        {"note", "Stamped at the current point in the recording and written when you call stop_recording."}};
}

/// Through the tool that writes a line into a project, as if it were called now with the line's own time.
Task<RecordingTools::WrittenNarration> RecordingTools::writeNarration(std::filesystem::path bundle) {
    WrittenNarration written;
    const auto pending = std::exchange(m_pendingNarration, {});
    for (const PendingNarration& line : pending) {
        JSONValue arguments = JSONValue::object();
        arguments["project"] = bundle.string();
        arguments["text"] = line.text;
        arguments["at"] = line.at;
        if (line.duration) arguments["duration"] = *line.duration;
        const MCPToolResult result = co_await m_narrateOnDisk(std::move(arguments));
        ++(result.isError ? written.failed : written.lines);
    }
    co_return written;
}

Task<void> RecordingTools::finishEndedRecording(std::filesystem::path bundle) {
    m_pacer.stop();
    co_await writeNarration(std::move(bundle));
}

} // namespace morvelin
