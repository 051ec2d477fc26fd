#include "core/base/WakeUp.h"

#include <sys/eventfd.h>

namespace morvelin {

WakeUp::WakeUp() : m_event(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

void WakeUp::ring() const { (void)::eventfd_write(m_event.get(), 1); }

void WakeUp::clear() const {
    eventfd_t rings = 0;
    (void)::eventfd_read(m_event.get(), &rings);
}

} // namespace morvelin
