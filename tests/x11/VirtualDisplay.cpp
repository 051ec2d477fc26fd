#include "x11/VirtualDisplay.h"

#include <array>
#include <csignal>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace morvelin {

namespace {

void becomeServer(int readyPipe, const std::string& screen) {
    // A test that is killed takes its server with it.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int silence = open("/dev/null", O_WRONLY);
    dup2(silence, STDOUT_FILENO);
    dup2(silence, STDERR_FILENO);
    const std::string descriptor = std::to_string(readyPipe);
    execlp("Xvfb", "Xvfb", "-displayfd", descriptor.c_str(), "-screen", "0", screen.c_str(), "-nolisten", "tcp",
           "-noreset", static_cast<char*>(nullptr));
    _exit(127);
}

/// The server writes its number and a line end once it takes connections.
std::string readLine(int pipe) {
    std::string line;
    for (char c = 0; read(pipe, &c, 1) == 1 && c != '\n';) line += c;
    return line;
}

} // namespace

VirtualDisplay::VirtualDisplay(const std::string& screen) {
    std::array<int, 2> pipe{};
    if (::pipe(pipe.data()) != 0) return;
    m_server = fork();
    if (m_server == 0) {
        close(pipe[0]);
        becomeServer(pipe[1], screen);
    }
    close(pipe[1]);
    const std::string number = readLine(pipe[0]);
    close(pipe[0]);
    if (!number.empty()) m_name = ":" + number;
}

VirtualDisplay::~VirtualDisplay() { kill(); }

void VirtualDisplay::kill() {
    if (m_server <= 0) return;
    ::kill(m_server, SIGKILL);
    waitpid(m_server, nullptr, 0);
    m_server = -1;
}

} // namespace morvelin
