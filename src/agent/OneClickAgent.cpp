#include "agent/OneClickAgent.h"

namespace morvelin {

MCPInstaller::Client::Kind clientKind(OneClickAgent agent) {
    switch (agent) {
    case OneClickAgent::Claude: return MCPInstaller::Client::Kind::ClaudeCode;
    case OneClickAgent::Codex: return MCPInstaller::Client::Kind::Codex;
    }
    return {};
}

std::string agentSetupLabel(OneClickAgent agent) {
    switch (agent) {
    case OneClickAgent::Claude: return "Connect Claude Code";
    case OneClickAgent::Codex: return "Connect Codex";
    }
    return {};
}

} // namespace morvelin
