// The words of a command line (`name=value …`) made the arguments of a tool.
#pragma once

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

} // namespace morvelin
