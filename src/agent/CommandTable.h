// The one table of commands: each tool's name and what it runs. Families of tools fill it; the router reads it.
#pragma once

#include <functional>
#include <string>
#include <unordered_map>

#include "agent/ArgumentReader.h"
#include "agent/MCPToolError.h"
#include "agent/MCPToolResult.h"
#include "core/base/Task.h"

namespace morvelin {

/// A tool's facts, or the sentence that says why it failed.
using ToolOutcome = Result<JSONValue, std::string>;

/// Fails a tool with any of the typed errors.
template <class Error>
[[nodiscard]] auto refusal(const Error& error) {
    return failure(std::string(error.description()));
}

[[nodiscard]] inline auto invalidArgument(std::string name, std::string reason) {
    return refusal(MCPToolError(MCPToolError::InvalidArgument{std::move(name), std::move(reason)}));
}

class CommandTable {
public:
    /// What the table runs. It is given the arguments to keep.
    using Command = std::function<Task<MCPToolResult>(JSONValue arguments)>;
    /// A tool that gives facts and may wait in between.
    using Waiting = std::function<Task<ToolOutcome>(JSONValue arguments)>;
    /// A tool that gives facts within the call.
    using Immediate = std::function<ToolOutcome(const ArgumentReader&)>;

    void add(std::string tool, Immediate run) {
        addCommand(std::move(tool), [run = std::move(run)](JSONValue arguments) { return runAtOnce(run, arguments); });
    }
    void addWaiting(std::string tool, Waiting run) {
        addCommand(std::move(tool),
                   [run = std::move(run)](JSONValue arguments) { return awaited(run, std::move(arguments)); });
    }
    /// A tool with an answer of its own form, such as a picture.
    void addCommand(std::string tool, Command run) { m_commands.emplace(std::move(tool), std::move(run)); }
    /// Lets another command stand before a tool that is there, and gives the tool's own.
    [[nodiscard]] Command replace(const std::string& tool, Command run) {
        return std::exchange(m_commands.at(tool), std::move(run));
    }

    /// Null for a name that no family took. The table outlives every call.
    [[nodiscard]] const Command* find(const std::string& tool) const {
        const auto found = m_commands.find(tool);
        return found != m_commands.end() ? &found->second : nullptr;
    }

private:
    static MCPToolResult resultOf(ToolOutcome outcome) {
        return outcome ? MCPToolResult::success(std::move(*outcome))
                       : MCPToolResult::failed(std::move(outcome).error());
    }
    static Task<MCPToolResult> runAtOnce(const Immediate& run, JSONValue arguments) {
        co_return resultOf(run(ArgumentReader(arguments)));
    }
    static Task<MCPToolResult> awaited(const Waiting& run, JSONValue arguments) {
        co_return resultOf(co_await run(std::move(arguments)));
    }

    std::unordered_map<std::string, Command> m_commands;
};

} // namespace morvelin
