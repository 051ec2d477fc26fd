// An event loop that watches descriptors too: what is told to the main thread through sockets and terminals.
#pragma once

#include "core/base/EventLoop.h"

namespace morvelin {

class DescriptorLoop : public EventLoop {
public:
    /// Calls the action on the loop's thread whenever the descriptor can be read without blocking, or has ended. The
    /// timer must end before the descriptor is closed; the action may end it.
    virtual Timer onReadable(int descriptor, Action action) = 0;
};

} // namespace morvelin
