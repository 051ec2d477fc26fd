// What an open editor offers to agents: its edit, and the means to change it as one undo step. Implemented by the editor.
#pragma once

#include <filesystem>
#include <functional>

#include "core/ProjectVersion.h"

namespace morvelin {

/// Used on the main thread only, and never kept beyond a call.
class MCPLiveEditor {
public:
    virtual ~MCPLiveEditor() = default;

    /// The edit as it stands on screen.
    [[nodiscard]] virtual EditPayload edit() const = 0;
    /// Shows the edit, as one undo step, and sees to its being saved.
    virtual void apply(EditPayload edit) = 0;
    /// `transcript.json` has been written.
    virtual void transcriptChanged() = 0;
};

/// The editor that has the bundle open, or null.
using LiveEditors = std::function<MCPLiveEditor*(const std::filesystem::path& bundleURL)>;

} // namespace morvelin
