// What a machine can bear, as far as the program asks. Read by a back-end, once at the start.
#pragma once

namespace morvelin {

struct MachineFacts {
    int performanceCores = 1; ///< whole cores of the fastest kind
    bool isOnACPower = true;  ///< also true of a machine without a battery
};

} // namespace morvelin
