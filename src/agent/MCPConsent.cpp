#include "agent/MCPConsent.h"

#include <map>
#include <utility>

#include <fmt/format.h>

#include "agent/SharedAnswer.h"
#include "core/base/Text.h"

namespace morvelin {

namespace {

using Answer = std::shared_ptr<SharedAnswer<bool>>;

} // namespace

struct MCPConsent::State {
    ClientPermissions permissions;
    Presenter presenter;
    Questions questions;
    Log log;
    std::map<std::string, Answer> pending; ///< by the name without case
    Answer lastPrompt;

    /// The question itself, once those asked earlier are answered where they come one after another.
    static Task<bool> ask(std::shared_ptr<State> state, Answer earlier, std::string name,
                          std::optional<std::string> version) {
        if (earlier) co_await earlier->wait();
        if (state->permissions.isApproved(name)) co_return true;
        const bool isAllowed = co_await state->presenter(name, std::move(version));
        if (isAllowed) state->remember(name);
        co_return isAllowed;
    }

    static Task<bool> authorize(std::shared_ptr<State> state, std::string name, std::optional<std::string> version) {
        if (state->permissions.isApproved(name)) co_return true;
        const std::string key = caseFolded(name);
        if (const auto found = state->pending.find(key); found != state->pending.end()) {
            const Answer shared = found->second;
            co_return co_await shared->wait();
        }
        const auto answer = std::make_shared<SharedAnswer<bool>>();
        state->pending[key] = answer;
        Answer earlier = std::exchange(state->lastPrompt, answer);
        if (state->questions == Questions::SideBySide) earlier.reset();

        const bool isAllowed = co_await ask(state, std::move(earlier), std::move(name), std::move(version));
        state->forget(key, answer);
        answer->give(isAllowed);
        co_return isAllowed;
    }

    void remember(const std::string& name) {
        if (const auto saved = permissions.approve(name); !saved)
            log(fmt::format("[Morvelin] The permission of “{}” could not be saved: {}", name, saved.error()));
    }

    void forget(const std::string& key, const Answer& answer) {
        if (const auto found = pending.find(key); found != pending.end() && found->second == answer)
            pending.erase(found);
        if (lastPrompt == answer) lastPrompt.reset();
    }
};

MCPConsent::MCPConsent(Defaults& defaults, Presenter presenter, Questions questions, Log log)
    : m_state(std::make_shared<State>(
          State{ClientPermissions(defaults), std::move(presenter), questions, std::move(log), {}, {}})) {}

Task<bool> MCPConsent::authorize(std::string name, std::optional<std::string> version) {
    return State::authorize(m_state, std::move(name), std::move(version));
}

} // namespace morvelin
