#include "app/Commands.h"

#include <csignal>

#include <fmt/core.h>

#include "agent/MCPClient.h"
#include "agent/MCPSocketListener.h"
#include "agent/MorvelinCommandRouter.h"
#include "agent/ToolArguments.h"
#include "agent/ToolCatalogue.h"
#include "app/Version.h"
#include "core/base/Base64.h"
#include "core/base/Files.h"

namespace morvelin {

namespace {

constexpr const char* kClientName = "morvelin call";

/// What came of a call, however it was made: the text to print, whether the tool failed, and the picture's PNG file.
struct Outcome {
    std::string text;
    bool isError = false;
    std::optional<std::string> image = {};
    bool isInterrupted = false;
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
    for (const JSONValue& part : result.value("content", JSONValue::array())) {
        if (part.value("type", "") == "text") outcome.text = part.value("text", "");
        if (part.value("type", "") == "image") outcome.image = bytesOfBase64(part.value("data", ""));
    }
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
        outcome = {std::move(result.text), result.isError, std::move(result.imagePNG)};
        composition.loop.quit();
    };
    // Whatever the tool has under way ends with the router, and the program waits for that.
    const auto stop = [&] {
        outcome = {.text = "Stopped.", .isError = true, .isInterrupted = true};
        composition.loop.quit();
    };
    const auto interrupt = composition.loop.onSignal(SIGINT, stop);
    const auto terminate = composition.loop.onSignal(SIGTERM, stop);
    const auto hangUp = composition.loop.onSignal(SIGHUP, stop);
    composition.loop.spawn(call());
    composition.loop.run();
    return outcome;
}

/// False when the picture could not be written; a caller who didn't ask for it is told how to get it.
bool saveImage(const std::string& image, const std::optional<std::filesystem::path>& file) {
    if (!file) {
        fmt::print(stderr, "The answer comes with a picture; --image FILE saves it.\n");
        return true;
    }
    const auto written = writeFileAtomically(*file, image);
    if (!written) fmt::print(stderr, "{}\n", written.error().description());
    return written.has_value();
}

} // namespace

int runCall(Composition& composition, const CallOptions& options) {
    const MCPTool* tool = findTool(options.tool);
    if (tool == nullptr) {
        fmt::print(stderr, "There is no tool “{}”. Run morvelin call --help for their names.\n", options.tool);
        return kWrongWords;
    }
    const auto typed = toolArguments(*tool, options.arguments);
    if (!typed) {
        fmt::print(stderr, "{}\n", typed.error());
        return kWrongWords;
    }
    std::error_code error;
    const JSONValue arguments = withPathsFrom(std::filesystem::current_path(error), *typed);
    auto program = MCPClient::connect(mcpSocketURL(composition.home));
    const Outcome outcome = program ? callRunningProgram(*program, options, arguments)
                                    : callOnFiles(composition, options, arguments);
    fmt::print(outcome.isError ? stderr : stdout, "{}\n", outcome.text);
    if (outcome.isInterrupted) return kStoppedByUser;
    if (outcome.image && !saveImage(*outcome.image, options.image)) return kFailure;
    return outcome.isError ? kFailure : kSuccess;
}

} // namespace morvelin
