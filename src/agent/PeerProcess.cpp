#include "agent/PeerProcess.h"

#include <fmt/format.h>

#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace morvelin {

bool peerRunsThisProgram(int socket) {
    ucred peer{};
    socklen_t length = sizeof peer;
    if (::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &length) != 0) return false;
    if (peer.uid != ::geteuid() || peer.pid <= 0) return false;

    struct stat theirs {};
    struct stat ours {};
    if (::stat(fmt::format("/proc/{}/exe", peer.pid).c_str(), &theirs) != 0) return false;
    if (::stat("/proc/self/exe", &ours) != 0) return false;
    return theirs.st_dev == ours.st_dev && theirs.st_ino == ours.st_ino;
}

} // namespace morvelin
