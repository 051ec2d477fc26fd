#include "agent/ConsentTerminal.h"

#include <array>
#include <cerrno>

#include <termios.h>
#include <unistd.h>

#include <fmt/format.h>

#include "core/base/Text.h"

namespace morvelin {

namespace {

/// A program in the background that reads its terminal is stopped by the system.
bool isInBackground(int terminal) {
    const pid_t foreground = ::tcgetpgrp(terminal);
    return foreground >= 0 && foreground != ::getpgrp();
}

std::optional<bool> meaningOf(std::string_view line) {
    const std::string answer = caseFolded(trimmed(line));
    if (answer == "y" || answer == "yes") return true;
    if (answer == "n" || answer == "no") return false;
    return std::nullopt;
}

} // namespace

ConsentTerminal::ConsentTerminal(ConsentQuestions& questions, int terminal, DescriptorLoop& loop, Print print)
    : m_questions(questions),
      m_terminal(terminal),
      m_loop(loop),
      m_print(std::move(print)) {
    m_questions.onChange([this] { questionsChanged(); });
    questionsChanged();
}

void ConsentTerminal::questionsChanged() {
    const auto first = m_questions.firstName();
    if (!first) {
        stopReading();
        return;
    }
    if (first != m_asking) {
        const bool isReading = m_asking.has_value();
        m_asking = first;
        (void)::tcflush(m_terminal, TCIFLUSH);
        m_typed.clear();
        if (!isReading) m_reading = m_loop.onReadable(m_terminal, [this] { readInput(); });
    }
    prompt();
}

void ConsentTerminal::stopReading() {
    m_reading = {};
    m_asking.reset();
}

/// Names the client, since the log may have shown several questions before this line.
void ConsentTerminal::prompt() {
    if (const auto name = m_questions.firstName()) m_print(fmt::format("Allow “{}”? [y/n] ", printableName(*name)));
}

void ConsentTerminal::readInput() {
    if (isInBackground(m_terminal)) {
        stopReading(); // until the next question
        return;
    }
    std::array<char, 256> bytes;
    const ssize_t count = ::read(m_terminal, bytes.data(), bytes.size());
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) return;
    if (count <= 0) {
        stopReading(); // the terminal is gone, or its user closed the input
        return;
    }
    m_typed.append(bytes.data(), static_cast<std::size_t>(count));
    for (std::size_t end = 0; (end = m_typed.find('\n')) != std::string::npos;) {
        const std::string line = m_typed.substr(0, end);
        m_typed.erase(0, end + 1);
        takeLine(line);
    }
}

void ConsentTerminal::takeLine(std::string_view line) {
    if (!m_questions.firstName()) return;
    if (const auto isAllowed = meaningOf(line))
        m_questions.answerFirst(*isAllowed);
    else
        prompt();
}

} // namespace morvelin
