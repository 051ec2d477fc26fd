// The tools that look at the screen and drive it: a still, pointer, keyboard, and the pause between two actions.
#pragma once

#include <optional>
#include <string>

#include "agent/AgentRecordingPacer.h"
#include "agent/CommandTable.h"
#include "agent/Gestures.h"
#include "agent/MCPHost.h"
#include "render/ScreenCapturer.h"

namespace morvelin {

/// Confined to the main thread.
class InputTools {
public:
    struct Services {
        EventLoop& loop;
        MCPHost& host;
        InputPosting& posting;
        ScreenCapturer screen;
    };

    InputTools(Services services, AgentRecordingPacer& pacer)
        : m_services(std::move(services)),
          m_pacer(pacer),
          m_gestures(m_services.loop, m_services.posting) {}

    void addTo(CommandTable& commands);
    /// Where no program controls a desktop, each tool says so.
    static void addWithoutDesktop(CommandTable& commands);

private:
    using Tool = Task<ToolOutcome> (InputTools::*)(JSONValue arguments);

    /// What a tool aims in, and at.
    struct Aim {
        PointerSpace space;
        DesktopPoint point;
    };

    void add(CommandTable& commands, const char* name, Tool tool);
    Task<ToolOutcome> paced(Tool tool, JSONValue arguments);
    Task<MCPToolResult> pacedScreenshot(JSONValue arguments);

    Task<MCPToolResult> screenshot(JSONValue arguments);
    Task<ToolOutcome> moveMouse(JSONValue arguments);
    Task<ToolOutcome> click(JSONValue arguments);
    Task<ToolOutcome> drag(JSONValue arguments);
    Task<ToolOutcome> scroll(JSONValue arguments);
    Task<ToolOutcome> type(JSONValue arguments);
    Task<ToolOutcome> pressKey(JSONValue arguments);
    Task<ToolOutcome> wait(JSONValue arguments);

    Result<PointerSpace, std::string> spaceOf(const ArgumentReader& arguments);
    Result<Aim, std::string> aim(const ArgumentReader& arguments, NormalizedPoint position);
    Result<void, std::string> requirePosting();

    Services m_services;
    AgentRecordingPacer& m_pacer;
    Gestures m_gestures;
    bool m_isCapturingScreenshot = false;
};

} // namespace morvelin
