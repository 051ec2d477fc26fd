#include "agent/ConsentQuestions.h"

#include <algorithm>

#include <fmt/format.h>

#include "agent/ConsentDialog.h"
#include "core/base/Text.h"

namespace morvelin {

namespace {

using Answer = std::shared_ptr<SharedAnswer<bool>>;

Task<bool> waitFor(Answer answer) { co_return co_await answer->wait(); }

/// The name between double quotes, so that pasting the command into a shell runs that command and nothing else.
std::string quotedForShell(const std::string& name) {
    std::string quoted = "\"";
    for (const char c : name) {
        if (c == '"' || c == '\\' || c == '$' || c == '`') quoted += '\\';
        quoted += c;
    }
    return quoted + '"';
}

/// The length of the character at a place when it would steer a terminal (C0, DEL, C1), or 0.
std::size_t controlLength(std::string_view text, std::size_t at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte < 0x20 || byte == 0x7f) return 1;
    const bool isC1 = byte == 0xc2 && at + 1 < text.size() && static_cast<unsigned char>(text[at + 1]) < 0xa0;
    return isC1 ? 2 : 0;
}

} // namespace

std::string printableName(const std::string& name) {
    constexpr std::size_t kMostBytes = 200;
    const std::string shown = cutAtCharacter(name, kMostBytes);
    std::string printable;
    for (std::size_t at = 0; at < shown.size();) {
        const std::size_t length = controlLength(shown, at);
        printable += length > 0 ? "\uFFFD" : std::string(1, shown[at]);
        at += std::max<std::size_t>(length, 1);
    }
    return printable;
}

ConsentQuestions::~ConsentQuestions() {
    m_onChange = nullptr;
    while (!m_open.empty()) close(0, false);
}

Task<bool> ConsentQuestions::ask(std::string name, std::optional<std::string> version) {
    const std::string shown = printableName(name);
    if (version) version = printableName(*version);
    m_log(fmt::format("[Morvelin] {} To allow it, run: morvelin clients allow {}", consentDialog(shown, version).title,
                      quotedForShell(shown)));
    const auto answer = std::make_shared<SharedAnswer<bool>>();
    m_open.push_back({std::move(name), answer});
    if (m_onChange) m_onChange();
    return waitFor(answer);
}

void ConsentQuestions::approvalsChanged() {
    for (std::size_t i = 0; i < m_open.size();) {
        if (m_permissions.isApproved(m_open[i].name))
            close(i, true);
        else
            ++i;
    }
}

std::optional<std::string> ConsentQuestions::firstName() const {
    if (m_open.empty()) return std::nullopt;
    return m_open.front().name;
}

void ConsentQuestions::answerFirst(bool isAllowed) {
    if (!m_open.empty()) close(0, isAllowed);
}

/// Giving the answer runs the client's session, which may ask or answer others: the list is in order before that.
void ConsentQuestions::close(std::size_t index, bool isAllowed) {
    const Answer answer = m_open[index].answer;
    m_open.erase(m_open.begin() + static_cast<std::ptrdiff_t>(index));
    answer->give(isAllowed);
    if (m_onChange) m_onChange();
}

} // namespace morvelin
