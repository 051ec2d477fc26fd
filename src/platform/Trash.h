// Moving something to the desktop's Trash, from where a person can put it back.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "core/base/Result.h"

namespace morvelin {

class Trash {
public:
    virtual ~Trash() = default;

    /// Moves a file or folder to the Trash. Gives where it now lies, if the system tells it; fails with one sentence,
    /// and then the item stands where it was.
    virtual Result<std::optional<std::filesystem::path>, std::string> moveToTrash(
        const std::filesystem::path& item) = 0;
};

} // namespace morvelin
