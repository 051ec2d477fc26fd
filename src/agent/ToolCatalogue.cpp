#include "agent/ToolCatalogue.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "agent/ToolTable.h"

namespace morvelin {

namespace {

std::vector<MCPTool> buildCatalogue() {
    std::vector<MCPTool> all;
    for (const auto chapter : {table::recordingTools, table::inputTools, table::readingTools, table::annotationTools,
                               table::narrationTools, table::transcriptTools, table::cuttingTools, table::zoomTools,
                               table::projectTools, table::styleTools, table::exportTools})
        std::ranges::move(chapter(), std::back_inserter(all));
    return all;
}

} // namespace

const std::vector<MCPTool>& toolCatalogue() {
    static const std::vector<MCPTool> catalogue = buildCatalogue();
    return catalogue;
}

const MCPTool* findTool(std::string_view name) {
    const auto found = std::ranges::find(toolCatalogue(), name, &MCPTool::name);
    return found == toolCatalogue().end() ? nullptr : &*found;
}

bool namesFile(std::string_view argument) {
    constexpr auto kFileArguments = std::to_array<std::string_view>({"project", "path", "background_image"});
    return std::ranges::find(kFileArguments, argument) != kFileArguments.end();
}

} // namespace morvelin
