// What `morvelin record` is told to record, as a target, and what there is to choose from where that isn't found.
#pragma once

#include <string>

#include "app/CommandLine.h"
#include "capture/CaptureTarget.h"

namespace morvelin {

[[nodiscard]] CaptureTarget targetOf(const RecordOptions& options);

/// One line for each display or window that could have been named; empty where the desktop tells none.
[[nodiscard]] std::string choicesFor(const CaptureTarget& target, ScreenSource& screen);

} // namespace morvelin
