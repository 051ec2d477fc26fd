// A real X server for one test, without a monitor behind it.
#pragma once

#include <string>

#include <sys/types.h>

namespace morvelin {

class VirtualDisplay {
public:
    /// Starts Xvfb on a free display and waits until it answers.
    explicit VirtualDisplay(const std::string& screen = "1280x720x24");
    ~VirtualDisplay();
    VirtualDisplay(const VirtualDisplay&) = delete;
    VirtualDisplay& operator=(const VirtualDisplay&) = delete;

    /// ":7"; empty when the server could not be started.
    [[nodiscard]] const std::string& name() const { return m_name; }
    /// Takes the display away at once, as a crash would.
    void kill();

private:
    pid_t m_server = -1;
    std::string m_name;
};

} // namespace morvelin
