// A project whose zoom or position keys are missing: what the user is told, and how it is repaired.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/CursorEvent.h"
#include "core/ProjectVersion.h"
#include "core/base/Log.h"

namespace morvelin::ProjectBundle {

enum class KeyframeRepair {
    Regenerate,              ///< all four tracks anew from the pointer's track
    StartWithSingleKeyframe, ///< the baseline key on each empty track
};

/// What the button that chooses a repair says.
[[nodiscard]] std::string_view label(KeyframeRepair repair);

/// A damage that a crash of the older format could leave.
struct LostKeyframes {
    static constexpr std::string_view kTitle = "This project’s keyframes are missing";

    std::string body;
    /// The repairs to choose from; with a single one there is nothing to ask, the user only acknowledges it.
    std::vector<KeyframeRepair> repairs;
};

/// Nothing where both tracks have keys.
[[nodiscard]] std::optional<LostKeyframes> lostKeyframes(const EditPayload& edit,
                                                         std::span<const CursorEvent> cursorEvents,
                                                         std::string_view projectName);

/// The edit with its keys repaired.
[[nodiscard]] EditPayload repaired(EditPayload edit, KeyframeRepair repair, std::span<const CursorEvent> cursorEvents,
                                   IdSource& ids, const Log& log);

} // namespace morvelin::ProjectBundle
