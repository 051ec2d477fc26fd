// What `set_style` may change of a version's look, as an agent gives it.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "agent/ArgumentReader.h"
#include "core/ProjectVersion.h"
#include "core/base/Result.h"

namespace morvelin {

/// What is absent keeps its value.
struct StyleChange {
    std::optional<std::string> backgroundPreset;          ///< a preset's name, a colour as `#RRGGBB`, or "none"
    std::optional<std::filesystem::path> backgroundImage; ///< as given, a leading `~` not yet expanded
    std::optional<double> padding;
    std::optional<double> cornerRadius;
    std::optional<double> shadowIntensity;
    std::optional<bool> captionsEnabled;
    std::optional<double> captionSize;
    std::optional<bool> clickAnimationsEnabled;
    std::optional<bool> cameraEnabled;
    std::optional<TapTapStyle> tapTapStyle;
    std::optional<double> tapTapScale;
    std::optional<bool> cursorVisible;
    std::optional<CursorStyle> cursorStyle;
    std::optional<double> cursorSize;
    std::optional<double> cursorSmoothing;
};

/// Fails with the first argument that is out of range or names nothing.
[[nodiscard]] Result<StyleChange, std::string> styleChange(const ArgumentReader& arguments);

/// The edit so changed, but for `backgroundImage`, which has to be taken into the project first. Fails for a background
/// that nothing is called.
[[nodiscard]] Result<EditPayload, std::string> withStyle(EditPayload edit, const StyleChange& change);

} // namespace morvelin
