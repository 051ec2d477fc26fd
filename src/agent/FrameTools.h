// The tools that let an agent look at a project: a frame of its recording, and a frame of its finished video.
#pragma once

#include <memory>
#include <string>

#include "agent/AgentFolders.h"
#include "agent/CommandTable.h"
#include "agent/ProjectSnapshot.h"
#include "core/base/EventLoop.h"
#include "core/base/Log.h"
#include "platform/MovieReader.h"
#include "render/ProjectFrameReader.h"

namespace morvelin {

/// Confined to the main thread; frames are read on workers, from the project's files as they were last saved.
class FrameTools {
public:
    struct Services {
        const AgentFolders& folders;
        ProjectSnapshots& snapshots;
        EventLoop& loop;
        MovieReaderFactory& movies;
        Log log;
    };

    explicit FrameTools(Services services) : m_services(std::move(services)) {}

    void addTo(CommandTable& commands);

private:
    using Frame = Result<ProjectFrameReader::Frame, FrameError>;
    /// Reads the wanted frame; run on a worker.
    using Reading = std::function<Frame(ProjectFrameReader&)>;

    Task<MCPToolResult> readSourceFrame(JSONValue arguments);
    Task<MCPToolResult> readRenderedFrame(JSONValue arguments);
    Task<Frame> read(std::shared_ptr<const ProjectSnapshot> project, const Reading& reading);
    std::unique_ptr<ProjectFrameReader> takeReader();
    void keepReader(std::unique_ptr<ProjectFrameReader> reader);

    Services m_services;
    /// The reader of the last call, for a while; null while a call has it.
    std::unique_ptr<ProjectFrameReader> m_reader;
    EventLoop::Timer m_release;
};

} // namespace morvelin
