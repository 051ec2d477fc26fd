#include "sound/SoundServer.h"

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <thread>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace morvelin {

namespace {

/// Each line is an argument: what the server loads. `norewinds` keeps an output's clock exact when its sound begins.
std::string script(const std::string& socket, const std::string& pipe) {
    std::string lines = "load-module module-native-protocol-unix auth-anonymous=1 socket=" + socket + "\n";
    for (const char* sink : {"speakers", "headphones", "at_lamp"})
        lines += std::string("load-module module-null-sink norewinds=1 sink_name=") + sink + "\n";
    lines += "load-module module-pipe-source format=float32le rate=44100 channels=1 source_name=desk file=" + pipe +
             " source_properties=device.description=\"Desk\\ microphone\"\n"
             "load-module module-remap-source master=at_lamp.monitor source_name=lamp "
             "source_properties=device.description=\"A\\ lamp's\\ microphone\"\n"
             "set-default-sink speakers\n"
             "set-default-source desk\n";
    return lines;
}

[[noreturn]] void becomeServer(const std::string& folder) {
    prctl(PR_SET_PDEATHSIG, SIGKILL); // a test that is killed takes its server with it
    const int silence = open("/dev/null", O_WRONLY);
    dup2(silence, STDOUT_FILENO);
    dup2(silence, STDERR_FILENO);
    for (const char* variable : {"HOME", "XDG_RUNTIME_DIR", "PULSE_RUNTIME_PATH", "PULSE_STATE_PATH"})
        setenv(variable, folder.c_str(), 1);
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
    const std::string file = "--file=" + folder + "/script.pa";
    execlp("pulseaudio", "pulseaudio", "-n", file.c_str(), "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no",
           "--disable-shm=yes", "--high-priority=no", "--realtime=no", static_cast<char*>(nullptr));
    _exit(127);
}

} // namespace

SoundServer::SoundServer() {
    const std::string socket = m_folder.path() / "native";
    put(m_folder.path() / "script.pa", script(socket, deskPipe()));
    m_name = "unix:" + socket;
    if (!start()) m_name.clear();
}

SoundServer::~SoundServer() { kill(); }

bool SoundServer::start() {
    m_server = fork();
    if (m_server == 0) becomeServer(m_folder.path());
    for (int tries = 0; tries < 100; ++tries) {
        if (control("get-default-source") == "desk\n") return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return false;
}

void SoundServer::kill() {
    if (m_server <= 0) return;
    ::kill(m_server, SIGKILL);
    waitpid(m_server, nullptr, 0);
    m_server = -1;
    std::filesystem::remove(m_folder.path() / "native");
    std::filesystem::remove(deskPipe());
}

void SoundServer::freeze() const { ::kill(m_server, SIGSTOP); }
void SoundServer::thaw() const { ::kill(m_server, SIGCONT); }

std::string SoundServer::control(const std::string& words) const {
    const std::string command = "pactl -s " + m_name + " " + words + " 2>/dev/null";
    std::string printed;
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return printed;
    std::array<char, 4096> buffer{};
    while (const std::size_t length = fread(buffer.data(), 1, buffer.size(), pipe))
        printed.append(buffer.data(), length);
    pclose(pipe);
    return printed;
}

void SoundServer::addMicrophone(const std::string& id, const std::string& heardAt) const {
    control("load-module module-remap-source source_name=" + id + " master=" + heardAt + ".monitor");
}

} // namespace morvelin
