#include "app/Commands.h"

#include <fmt/core.h>

#include "agent/MCPClient.h"
#include "agent/MCPSocketListener.h"
#include "agent/MorvelinCommandRouter.h"
#include "agent/ToolArguments.h"
#include "agent/ToolCatalogue.h"
#include "app/Version.h"

namespace morvelin {

namespace {

constexpr const char* kClientName = "morvelin call";

/// What came of a call, however it was made: the text to print, and whether the tool failed.
struct Outcome {
    std::string text;
    bool isError = false;
};

void askForPatience() {
    fmt::print(stderr,
               "The running Morvelin is another copy of the program, so it asks whether “{0}” may control it.\n"
               "Answer there, or with: morvelin clients allow \"{0}\"\n",
               kClientName);
}

/// The last text of a tool's result is what a person reads.
Outcome outcomeOf(const JSONValue& result) {
    Outcome outcome;
    outcome.isError = result.value("isError", false);
    for (const JSONValue& part : result.value("content", JSONValue::array()))
        if (part.value("type", "") == "text") outcome.text = part.value("text", "");
    return outcome;
}

Outcome callRunningProgram(MCPClient& program, const CallOptions& options, const JSONValue& arguments) {
    const JSONValue introduction{{"protocolVersion", "2025-06-18"},
                                 {"capabilities", JSONValue::object()},
                                 {"clientInfo", {{"name", kClientName}, {"version", kVersion}}}};
    const auto welcome = program.request("initialize", introduction, {1_s, askForPatience});
    if (!welcome) return {welcome.error(), true};
    const auto result = program.request("tools/call", {{"name", options.tool}, {"arguments", arguments}});
    if (!result) return {result.error(), true};
    return outcomeOf(*result);
}

Outcome callOnFiles(Composition& composition, const CallOptions& options, const JSONValue& arguments) {
    MorvelinCommandRouter router(composition.routerServices());
    Outcome outcome;
    const auto call = [&]() -> Task<void> {
        MCPToolResult result = co_await router.call(options.tool, arguments, kClientName);
        outcome = {std::move(result.text), result.isError};
        composition.loop.quit();
    };
    composition.loop.spawn(call());
    composition.loop.run();
    return outcome;
}

} // namespace

int runCall(Composition& composition, const CallOptions& options) {
    const MCPTool* tool = findTool(options.tool);
    if (tool == nullptr) {
        fmt::print(stderr, "There is no tool “{}”. Run morvelin call --help for their names.\n", options.tool);
        return kWrongWords;
    }
    const auto arguments = toolArguments(*tool, options.arguments);
    if (!arguments) {
        fmt::print(stderr, "{}\n", arguments.error());
        return kWrongWords;
    }
    auto program = MCPClient::connect(mcpSocketURL(composition.home));
    const Outcome outcome = program ? callRunningProgram(*program, options, *arguments)
                                    : callOnFiles(composition, options, *arguments);
    fmt::print(outcome.isError ? stderr : stdout, "{}\n", outcome.text);
    return outcome.isError ? kFailure : kSuccess;
}

} // namespace morvelin
