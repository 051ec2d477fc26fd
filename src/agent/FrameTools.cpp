#include "agent/FrameTools.h"

#include <fmt/format.h>

#include "agent/HeadlessEditError.h"
#include "agent/ProjectArgument.h"
#include "core/base/Rounding.h"

namespace morvelin {

namespace {

/// Models scale larger images down anyway.
constexpr int kLongEdge = 1536;
/// An agent that looks at a project looks several times; after that its files and memory are given back.
constexpr Seconds kReaderIsKept{60};

/// What a frame is of, as agents are told.
enum class FrameKind { Capture, Rendered };

constexpr auto rawValues(std::type_identity<FrameKind>) {
    using enum FrameKind;
    return std::to_array<std::pair<FrameKind, std::string_view>>({{Capture, "capture"}, {Rendered, "rendered"}});
}

auto missingTime() { return MCPToolError(MCPToolError::InvalidArgument{"at", "expected a time in seconds"}); }

std::string momentOf(const ProjectFrameReader::Frame& frame) {
    const double source = frame.sourceTime.value;
    if (!frame.timelineTime) return fmt::format("{:.2f}s into the recording", source);
    return fmt::format("{:.2f}s on the edit timeline ({:.2f}s into the recording)", frame.timelineTime->value, source);
}

std::string textOf(const ProjectFrameReader::Frame& frame, FrameKind kind) {
    const std::string size = fmt::format("{}×{}", frame.size.width, frame.size.height);
    switch (kind) {
    case FrameKind::Capture:
        return fmt::format("{} source frame at {}. Positions are normalized 0–1 from the top-left of this image, which "
                           "is the capture space: pass them straight to set_zoom, annotate or a mask.{}",
                           size, momentOf(frame),
                           frame.timelineTime ? ""
                                              : " This moment has been cut out of the edit, so no editing tool can "
                                                "reach it.");
    case FrameKind::Rendered:
        return fmt::format("{} rendered frame at {}, as the export would draw it. Positions in this image are NOT "
                           "capture coordinates: padding and zoom move everything. To aim an edit, read the source "
                           "frame at the same time instead.",
                           size, momentOf(frame));
    }
    return {};
}

MCPToolResult answer(const ProjectFrameReader::Frame& frame, FrameKind kind, const ProjectSnapshot& project) {
    JSONValue facts{{"project", project.project.bundleURL.string()},
                    {"width", frame.size.width},
                    {"height", frame.size.height},
                    {"source_time", roundedTo3Decimals(frame.sourceTime)},
                    {"kind", std::string(json::rawValue(kind))}};
    if (frame.timelineTime) facts["at"] = roundedTo3Decimals(*frame.timelineTime);
    return {textOf(frame, kind), false, std::move(facts), std::string(frame.pngData.begin(), frame.pngData.end())};
}

/// A moment outside the finished video is told as every tool tells it.
std::string refusalOfRendered(const FrameError& error) {
    const auto* outside = std::get_if<FrameError::OutOfRange>(&error.reason());
    if (outside == nullptr) return error.description();
    if (!(outside->duration > 0_s)) return HeadlessEditError(HeadlessEditError::EmptyTimeline{}).description();
    return HeadlessEditError(HeadlessEditError::OutsideTimeline{EditTime(outside->time), outside->duration})
        .description();
}

} // namespace

void FrameTools::addTo(CommandTable& commands) {
    commands.addCommand("read_source_frame",
                        [this](JSONValue arguments) { return readSourceFrame(std::move(arguments)); });
    commands.addCommand("read_rendered_frame",
                        [this](JSONValue arguments) { return readRenderedFrame(std::move(arguments)); });
}

Task<MCPToolResult> FrameTools::readSourceFrame(JSONValue arguments) {
    const ArgumentReader reader(arguments);
    const auto at = reader.number("at");
    if (!at) co_return MCPToolResult::failed(missingTime().description());
    const auto clock = json::fromRawValue<FrameClock>(reader.text("clock").value_or("timeline"));
    if (!clock) co_return MCPToolResult::failed(invalidArgument("clock", "expected timeline or source").error());
    const auto project = readProject(reader, m_services.folders, m_services.snapshots);
    if (!project) co_return MCPToolResult::failed(project.error());

    const Reading reading = [&](ProjectFrameReader& frames) { return frames.read(*at, *clock, kLongEdge); };
    const Frame frame = co_await read(*project, reading);
    if (!frame) co_return MCPToolResult::failed(frame.error().description());
    co_return answer(*frame, FrameKind::Capture, **project);
}

Task<MCPToolResult> FrameTools::readRenderedFrame(JSONValue arguments) {
    const ArgumentReader reader(arguments);
    const auto at = reader.number("at");
    if (!at) co_return MCPToolResult::failed(missingTime().description());
    const auto project = readProject(reader, m_services.folders, m_services.snapshots);
    if (!project) co_return MCPToolResult::failed(project.error());

    const Reading reading = [&](ProjectFrameReader& frames) { return frames.readRendered(EditTime(*at), kLongEdge); };
    const Frame frame = co_await read(*project, reading);
    if (!frame) co_return MCPToolResult::failed(refusalOfRendered(frame.error()));
    co_return answer(*frame, FrameKind::Rendered, **project);
}

Task<FrameTools::Frame> FrameTools::read(std::shared_ptr<const ProjectSnapshot> project, const Reading& reading) {
    auto reader = takeReader();
    Frame frame = co_await onWorker(m_services.loop, [&] {
        reader->show({project, &project->contents});
        return reading(*reader);
    });
    keepReader(std::move(reader));
    co_return frame;
}

/// Two calls at once have a reader each.
std::unique_ptr<ProjectFrameReader> FrameTools::takeReader() {
    m_release = {};
    if (m_reader) return std::move(m_reader);
    return std::make_unique<ProjectFrameReader>(m_services.movies, m_services.log);
}

void FrameTools::keepReader(std::unique_ptr<ProjectFrameReader> reader) {
    m_reader = std::move(reader);
    m_release = m_services.loop.after(kReaderIsKept, [this] { m_reader.reset(); });
}

} // namespace morvelin
