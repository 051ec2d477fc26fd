// Lines for whoever watches the program run; passed in, so that each program chooses where they go.
#pragma once

#include <functional>
#include <string_view>

namespace morvelin {

/// Takes one line, without its line end. May be called from any thread.
using Log = std::function<void(std::string_view line)>;

/// To standard output, which is where the desktop program and the server log.
[[nodiscard]] Log standardOutputLog();
/// To standard error, for commands whose standard output is their result.
[[nodiscard]] Log standardErrorLog();

} // namespace morvelin
