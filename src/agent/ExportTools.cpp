#include "agent/ExportTools.h"

#include <fmt/format.h>

#include "agent/ProjectArgument.h"

namespace morvelin {

namespace {

namespace fs = std::filesystem;

/// What is asked for; what `for_ai` makes meaningless is not even looked at.
Result<ExportRequest, std::string> requestOf(const ArgumentReader& arguments) {
    ExportRequest request;
    if (arguments.flag("for_ai", false)) {
        request.purpose = ExportPurpose::ForAI;
        return request;
    }
    const std::string format = arguments.text("format").value_or("mp4");
    const auto knownFormat = json::fromRawValue<ExportFormat>(format);
    if (!knownFormat) return invalidArgument("format", fmt::format("expected mp4 or gif, got “{}”", format));
    const std::string quality = arguments.text("quality").value_or("high");
    const auto knownQuality = videoQualityNamed(quality);
    if (!knownQuality)
        return invalidArgument("quality",
                               fmt::format("expected very_low, low, medium, high or ultra, got “{}”", quality));
    request.format = *knownFormat;
    request.quality = *knownQuality;
    return request;
}

JSONValue describe(const ExportedFiles& files, const fs::path& project, ExportPurpose purpose) {
    JSONValue facts{{"video", files.video.string()},
                    {"project", project.string()},
                    {"for_ai", purpose == ExportPurpose::ForAI},
                    {"note", "The video is ready."},
                    {"next", "Call read_events on the video path to see what it contains without watching it."}};
    if (files.events) facts["events"] = files.events->string();
    if (files.transcript) facts["transcript"] = files.transcript->string();
    return facts;
}

} // namespace

void ExportTools::addTo(CommandTable& commands) {
    commands.addWaiting("export", [this](JSONValue arguments) { return exportVideo(std::move(arguments)); });
}

Task<ToolOutcome> ExportTools::exportVideo(JSONValue arguments) {
    if (m_isExporting) co_return refusal(MCPToolError(MCPToolError::OperationInProgress{"video export"}));
    const ArgumentReader reader(arguments);
    const auto request = requestOf(reader);
    if (!request) co_return failure(request.error());
    const auto project = readProject(reader, m_services.folders, m_services.snapshots);
    if (!project) co_return failure(project.error());

    m_isExporting = true;
    ExportEngine engine = m_services.exportEngineFactory();
    const std::stop_token stop = m_stop.get_token();
    const auto files = co_await onWorker(
        m_services.loop, [&] { return engine.exportProject((*project)->contents, *request, {}, stop); });
    m_isExporting = false;
    if (!files) co_return refusal(files.error());
    co_return describe(*files, (*project)->project.bundleURL, request->purpose);
}

} // namespace morvelin
