// Which process sits at the other end of a local socket.
#pragma once

namespace morvelin {

/// Another run of this very program by the same user, such as the command line's, needs nobody's leave to drive it.
/// What counts is the executable file that the connecting process runs, not what it calls itself.
/// To be asked when the connection is accepted: a process may run something else later.
[[nodiscard]] bool peerRunsThisProgram(int socket);

} // namespace morvelin
