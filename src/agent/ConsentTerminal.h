// Lets whoever sits at the server's terminal answer the question of consent with a line.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "agent/ConsentQuestions.h"
#include "core/base/DescriptorLoop.h"

namespace morvelin {

/// Shows one question at a time and reads lines while one is open, on the main thread: y or yes allows, n or no denies,
/// anything else is asked again. What was typed before the question was shown does not count.
class ConsentTerminal {
public:
    using Print = std::function<void(std::string_view text)>;

    /// `terminal` stays open for longer than this and belongs to the caller, as do the questions and the loop.
    ConsentTerminal(ConsentQuestions& questions, int terminal, DescriptorLoop& loop, Print print);
    ConsentTerminal(const ConsentTerminal&) = delete;
    ConsentTerminal& operator=(const ConsentTerminal&) = delete;
    ~ConsentTerminal() { m_questions.onChange(nullptr); }

private:
    void questionsChanged();
    void stopReading();
    void prompt();
    void readInput();
    void takeLine(std::string_view line);

    ConsentQuestions& m_questions;
    const int m_terminal;
    DescriptorLoop& m_loop;
    const Print m_print;
    EventLoop::Timer m_reading;          ///< while a question is open
    std::optional<std::string> m_asking; ///< the client whose question is shown
    std::string m_typed;                 ///< of a line that isn't whole yet
};

} // namespace morvelin
