// The recording family of tools. Nothing hosts a recording for agents yet, and each of them says so.
#pragma once

#include "agent/CommandTable.h"

namespace morvelin {

class RecordingTools {
public:
    void addTo(CommandTable& commands) const;
};

} // namespace morvelin
