// A process that is killed between two file operations, at any of them.
#pragma once

#include <functional>

namespace morvelin {

/// Runs the work in a process of its own, which ends without further ado just before its `operation`-th change of the
/// disk (1 is the first: a folder made, bytes written, a file synced, renamed or removed). Tells whether it came to that.
bool stopsAtFileOperation(int operation, const std::function<void()>& work);

} // namespace morvelin
