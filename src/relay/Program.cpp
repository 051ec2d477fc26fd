#include "relay/Program.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <thread>

#include <fcntl.h>
#include <pwd.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace relay {

namespace {

constexpr std::size_t kMostPathBytes = 103; // as the program has it

std::string homeFolder() {
    if (const char* home = std::getenv("HOME"); home != nullptr && home[0] == '/') return home;
    const passwd* user = ::getpwuid(::getuid());
    return user != nullptr && user->pw_dir != nullptr ? user->pw_dir : "";
}

std::string ownFolder() {
    std::array<char, PATH_MAX> path{};
    const ssize_t length = ::readlink("/proc/self/exe", path.data(), path.size());
    const std::string_view own(path.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
    return std::string(own.substr(0, own.rfind('/') + 1));
}

/// The folder of a path and those above it; what cannot be made shows when the file in it is opened.
void makeFoldersOf(const std::string& path) {
    for (std::size_t slash = path.find('/', 1); slash != std::string::npos; slash = path.find('/', slash + 1))
        (void)::mkdir(path.substr(0, slash).c_str(), 0700);
}

/// What `posix_spawn` is to do to the three standard descriptors and all others.
class SpawnActions {
public:
    explicit SpawnActions(const std::string& log) {
        posix_spawn_file_actions_init(&files);
        posix_spawn_file_actions_addopen(&files, 0, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&files, 1, log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        posix_spawn_file_actions_adddup2(&files, 1, 2);
        posix_spawn_file_actions_addclosefrom_np(&files, 3);
        posix_spawnattr_init(&attributes);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGDEF);
        sigset_t signals;
        sigemptyset(&signals);
        sigaddset(&signals, SIGPIPE);
        posix_spawnattr_setsigdefault(&attributes, &signals);
    }
    SpawnActions(const SpawnActions&) = delete;
    SpawnActions& operator=(const SpawnActions&) = delete;
    ~SpawnActions() {
        posix_spawnattr_destroy(&attributes);
        posix_spawn_file_actions_destroy(&files);
    }

    posix_spawn_file_actions_t files{};
    posix_spawnattr_t attributes{};
};

bool hasEnded(pid_t child) { return ::waitpid(child, nullptr, WNOHANG) == child; }

} // namespace

Places placesOfUser() {
    const std::string folder = homeFolder() + "/Library/Application Support/Morvelin/";
    return {folder + "mcp.sock", folder + "serve.log"};
}

int connectTo(const std::string& socket, std::string& error) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (socket.size() > kMostPathBytes) {
        error = "Socket path is too long for a UNIX domain socket: " + socket;
        return -1;
    }
    std::memcpy(address.sun_path, socket.c_str(), socket.size());
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (descriptor >= 0 && ::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
        return descriptor;
    error = "Morvelin is not running: nothing answers at " + socket + " (" + std::strerror(errno) + ").";
    if (descriptor >= 0) ::close(descriptor);
    return -1;
}

int startAndConnect(const Places& places, std::string& error) {
    using namespace std::chrono;
    constexpr seconds kPatience{5};
    constexpr milliseconds kPause{20};

    makeFoldersOf(places.log);
    const std::string program = ownFolder() + "morvelin";
    std::string name = "morvelin", command = "serve";
    const std::array<char*, 3> arguments{name.data(), command.data(), nullptr};
    const SpawnActions actions(places.log);
    pid_t child = 0;
    const int failed = ::posix_spawn(&child, program.c_str(), &actions.files, &actions.attributes, arguments.data(),
                                     environ);
    if (failed != 0) {
        error = "Morvelin could not be started from " + program + " (" + std::strerror(failed) + ").";
        return -1;
    }
    const auto end = steady_clock::now() + kPatience;
    for (bool isRunning = true; isRunning && steady_clock::now() < end; std::this_thread::sleep_for(kPause)) {
        // Another copy that was quicker ends ours, and is as good.
        isRunning = !hasEnded(child);
        const int descriptor = connectTo(places.socket, error);
        if (descriptor >= 0) return descriptor;
    }
    error = "Morvelin was started but does not answer; its log is " + places.log + ".";
    return -1;
}

} // namespace relay
