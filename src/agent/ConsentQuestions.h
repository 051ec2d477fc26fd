// Puts the question of consent to whoever runs the server without a window: as lines of the log, answered from outside.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "agent/ClientPermissions.h"
#include "agent/SharedAnswer.h"
#include "core/base/Log.h"
#include "core/base/Task.h"
#include "platform/Defaults.h"

namespace morvelin {

/// Keeps the questions that are open, on the main thread. Each can be answered by `answerFirst` (a terminal) or by the
/// client's name turning up among the approved ones, whichever comes first. Those still open at its end are answered no.
class ConsentQuestions {
public:
    /// The settings must outlive it.
    ConsentQuestions(Defaults& defaults, Log log) : m_permissions(defaults), m_log(std::move(log)) {}
    ConsentQuestions(const ConsentQuestions&) = delete;
    ConsentQuestions& operator=(const ConsentQuestions&) = delete;
    ~ConsentQuestions();

    /// Logs the question and how to answer it, and waits. The presenter of `MCPConsent`.
    [[nodiscard]] Task<bool> ask(std::string name, std::optional<std::string> version);
    /// Looks at the approved names again; to be called when the settings have changed.
    void approvalsChanged();

    /// The name in the question that has been open for longest.
    [[nodiscard]] std::optional<std::string> firstName() const;
    void answerFirst(bool isAllowed);
    /// Called after a question was asked or answered.
    void onChange(std::function<void()> action) { m_onChange = std::move(action); }

private:
    struct Question {
        std::string name;
        std::shared_ptr<SharedAnswer<bool>> answer;
    };

    void close(std::size_t index, bool isAllowed);

    ClientPermissions m_permissions;
    Log m_log;
    std::function<void()> m_onChange;
    std::vector<Question> m_open;
};

/// A name as it may be shown on a terminal: what would steer the terminal or begin a line is replaced, and a very long
/// name is cut.
[[nodiscard]] std::string printableName(const std::string& name);

} // namespace morvelin
