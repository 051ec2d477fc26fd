// Keys that are typed at the terminal while a command runs, each as it is pressed. Owned by the command's run.
#pragma once

#include <functional>

#include <termios.h>

#include "core/base/DescriptorLoop.h"

namespace morvelin {

/// Keys don't show and need no Return meanwhile; Ctrl-C stays what it is. Does nothing where standard input is no
/// terminal, or belongs to another program in front of this one. The terminal is as before once this goes.
class TerminalKeys {
public:
    TerminalKeys(DescriptorLoop& loop, std::function<void(char key)> pressed);
    ~TerminalKeys();
    TerminalKeys(const TerminalKeys&) = delete;
    TerminalKeys& operator=(const TerminalKeys&) = delete;

    [[nodiscard]] bool areRead() const { return m_isReading; }

private:
    void read();

    std::function<void(char key)> m_pressed;
    termios m_before{};
    bool m_isReading = false;
    EventLoop::Timer m_reading;
};

} // namespace morvelin
