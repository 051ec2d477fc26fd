// Lets one thread end another's wait in `poll`; owned by the one that waits.
#pragma once

#include "core/base/OwnedDescriptor.h"

namespace morvelin {

class WakeUp {
public:
    WakeUp();

    /// From any thread; several rings before the waiting thread looks count as one.
    void ring() const;
    /// By the waiting thread, before it looks at what the ring is about.
    void clear() const;
    /// Readable while a ring waits. Closed when the process had no descriptor left.
    [[nodiscard]] const OwnedDescriptor& descriptor() const { return m_event; }

private:
    OwnedDescriptor m_event;
};

} // namespace morvelin
