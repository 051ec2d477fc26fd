// Asks the user once for each agent client whether it may drive the program, and remembers a yes.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "agent/ClientPermissions.h"
#include "core/base/Log.h"
#include "core/base/Task.h"
#include "platform/Defaults.h"

namespace morvelin {

/// One for the process, on the main thread. The settings must outlive every question.
class MCPConsent {
public:
    /// Puts the question to the user and gives the answer, which may take any time.
    using Presenter = std::function<Task<bool>(std::string name, std::optional<std::string> version)>;

    /// How questions about different clients meet the user: dialogs must not cover one another, lines of a log may follow.
    enum class Questions { OneAfterAnother, SideBySide };

    /// A yes that cannot be remembered holds for its connection; the log tells why it will be asked again.
    MCPConsent(Defaults& defaults, Presenter presenter, Questions questions, Log log);

    /// Whether the client may drive the program. Clients whose names differ in case alone share one question. A no is not
    /// remembered: the next call asks again.
    [[nodiscard]] Task<bool> authorize(std::string name, std::optional<std::string> version);

private:
    struct State;

    /// Held by each question under way as well, which may end after its owner.
    std::shared_ptr<State> m_state;
};

} // namespace morvelin
