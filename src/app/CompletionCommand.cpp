#include "app/Commands.h"

#include <fmt/core.h>

#include "agent/ToolCatalogue.h"

namespace morvelin {

int runCompletion(const CompletionOptions& options) {
    fmt::print("{}", completionScript(options.shell, commandTree(), toolCatalogue()));
    return kSuccess;
}

} // namespace morvelin
