// The table of the tools that agents are offered: names, descriptions and input schemas are a wire format.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "core/base/JSON.h"

namespace morvelin {

struct MCPTool {
    std::string name;
    std::string description;
    JSONValue inputSchema;
};

/// All tools, in the order in which clients see them. Built once, on first use.
[[nodiscard]] const std::vector<MCPTool>& toolCatalogue();

/// The tool of that name, or null.
[[nodiscard]] const MCPTool* findTool(std::string_view name);

/// Whether an argument of that name, of whatever tool, names a file or folder.
[[nodiscard]] bool namesFile(std::string_view argument);

} // namespace morvelin
