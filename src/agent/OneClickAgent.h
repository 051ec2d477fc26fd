// The agents that the first-run set-up offers to connect with one click.
#pragma once

#include <string>

#include "agent/MCPInstaller.h"

namespace morvelin {

enum class OneClickAgent { Claude, Codex };

[[nodiscard]] MCPInstaller::Client::Kind clientKind(OneClickAgent agent);

/// The text of the button that connects the agent.
[[nodiscard]] std::string agentSetupLabel(OneClickAgent agent);

} // namespace morvelin
