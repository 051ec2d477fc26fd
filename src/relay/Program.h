// Finds the running program, and starts it when asked to.
#pragma once

#include <string>

namespace relay {

/// Where the program and its log live, from the user's home folder.
struct Places {
    std::string socket;
    std::string log;
};

[[nodiscard]] Places placesOfUser();

/// A connected socket, or -1 with the reason in `error`, one sentence.
[[nodiscard]] int connectTo(const std::string& socket, std::string& error);

/// Starts `morvelin serve` from the folder of this very executable, on its own and with its log in a file, and waits up
/// to 5 s until it takes connections. A connected socket, or -1 with the reason in `error`.
[[nodiscard]] int startAndConnect(const Places& places, std::string& error);

} // namespace relay
