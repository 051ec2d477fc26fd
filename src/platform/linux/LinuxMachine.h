// The machine as the kernel describes it below /sys.
#pragma once

#include <filesystem>

#include "platform/Machine.h"

namespace morvelin {

/// `sys` is the folder itself, so that another one can stand for it.
[[nodiscard]] MachineFacts machineFacts(const std::filesystem::path& sys = "/sys");

} // namespace morvelin
