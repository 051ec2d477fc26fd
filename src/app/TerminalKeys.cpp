#include "app/TerminalKeys.h"

#include <array>
#include <span>

#include <unistd.h>

namespace morvelin {

TerminalKeys::TerminalKeys(DescriptorLoop& loop, std::function<void(char key)> pressed)
    : m_pressed(std::move(pressed)) {
    if (::isatty(STDIN_FILENO) != 1 || ::tcgetpgrp(STDIN_FILENO) != ::getpgrp()) return;
    if (::tcgetattr(STDIN_FILENO, &m_before) != 0) return;
    termios keys = m_before;
    keys.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    keys.c_cc[VMIN] = 0;
    keys.c_cc[VTIME] = 0;
    if (::tcsetattr(STDIN_FILENO, TCSANOW, &keys) != 0) return;
    m_isReading = true;
    m_reading = loop.onReadable(STDIN_FILENO, [this] { read(); });
}

TerminalKeys::~TerminalKeys() {
    if (m_isReading) (void)::tcsetattr(STDIN_FILENO, TCSANOW, &m_before);
}

void TerminalKeys::read() {
    std::array<char, 64> typed{};
    const auto count = ::read(STDIN_FILENO, typed.data(), typed.size());
    if (count <= 0) {
        m_reading = {}; // the terminal has gone
        return;
    }
    for (const char key : std::span(typed).first(static_cast<std::size_t>(count))) m_pressed(key);
}

} // namespace morvelin
