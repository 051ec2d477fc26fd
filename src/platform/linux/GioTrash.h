// The desktop's Trash as freedesktop.org lays it out, through GIO.
#pragma once

#include "platform/Trash.h"

namespace morvelin {

/// An item goes to the Trash of the file system that it lies on. From any thread.
class GioTrash final : public Trash {
public:
    Result<std::optional<std::filesystem::path>, std::string> moveToTrash(const std::filesystem::path& item) override;
};

} // namespace morvelin
