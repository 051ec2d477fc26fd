// The words of a command line (`name=value …`) made the arguments of a tool.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "agent/ToolCatalogue.h"
#include "core/base/JSON.h"
#include "core/base/Result.h"

namespace morvelin {

/// An object whose members have the types of the tool's schema: numbers, `true` and `false`, texts as they stand, records
/// as JSON, lists as JSON or as texts with commas between them. Whether a value is in range is for the tool to say. The
/// error is one sentence about the first word that is wrong, or about what is missing.
[[nodiscard]] Result<JSONValue, std::string> toolArguments(const MCPTool& tool, const std::vector<std::string>& words);

/// The arguments with their relative paths led from `here`: a running program has another working folder than whoever
/// calls it. A bare word for a project is a path only where something lies there, and else a project's name.
[[nodiscard]] JSONValue withPathsFrom(const std::filesystem::path& here, JSONValue arguments);

} // namespace morvelin
