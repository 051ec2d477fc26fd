#include "core/base/Parallel.h"

#include <sched.h>

namespace morvelin {

std::size_t processorCount() {
    cpu_set_t allowed;
    CPU_ZERO(&allowed);
    if (::sched_getaffinity(0, sizeof allowed, &allowed) != 0) return 1; // more than the set has room for
    return static_cast<std::size_t>(CPU_COUNT(&allowed));
}

} // namespace morvelin
