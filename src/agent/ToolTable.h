// The words that the table of tools is written in, so that a tool's row reads like the manual that agents get.
// Inside the catalogue only.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "agent/ToolCatalogue.h"

namespace morvelin::table {

/// One argument of a tool: its name and its schema.
using Property = std::pair<std::string, JSONValue>;
using Properties = std::initializer_list<Property>;
using Names = std::initializer_list<std::string_view>;

/// A row: what the tool is called, its manual as `prose`, its arguments, and which of them it needs.
[[nodiscard]] MCPTool tool(std::string_view name, std::string_view manual, Properties properties = {},
                           Names needed = {});

/// Text as it is typed here, indented and folded, made what it means: a line end is a blank, an empty line parts two
/// paragraphs, and a line that begins with a dash is a list's line of its own.
[[nodiscard]] std::string prose(std::string_view typed);

[[nodiscard]] Property text(std::string_view name, std::string_view description);
[[nodiscard]] Property number(std::string_view name, std::string_view description);
[[nodiscard]] Property integer(std::string_view name, std::string_view description);
[[nodiscard]] Property flag(std::string_view name, std::string_view description);
/// A text out of a closed set.
[[nodiscard]] Property choice(std::string_view name, Names values, std::string_view description);
/// A list of texts.
[[nodiscard]] Property texts(std::string_view name, std::string_view description);
/// A record whose members are all needed.
[[nodiscard]] Property record(std::string_view name, std::string_view description, Properties members);

// Arguments that many tools share.
[[nodiscard]] Property project();
[[nodiscard]] Property version();
[[nodiscard]] Property displayOfPosition();
[[nodiscard]] Property normalizedRect();

// The table's chapters, in its order.
[[nodiscard]] std::vector<MCPTool> recordingTools();
[[nodiscard]] std::vector<MCPTool> inputTools();
[[nodiscard]] std::vector<MCPTool> readingTools();
[[nodiscard]] std::vector<MCPTool> annotationTools();
[[nodiscard]] std::vector<MCPTool> narrationTools();
[[nodiscard]] std::vector<MCPTool> transcriptTools();
[[nodiscard]] std::vector<MCPTool> cuttingTools();
[[nodiscard]] std::vector<MCPTool> zoomTools();
[[nodiscard]] std::vector<MCPTool> projectTools();
[[nodiscard]] std::vector<MCPTool> styleTools();
[[nodiscard]] std::vector<MCPTool> exportTools();

} // namespace morvelin::table
