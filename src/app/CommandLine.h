// What the user typed, as values: one record per command.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <variant>

#include "core/base/Time.h"
#include "render/ExportSettings.h"

namespace morvelin {

/// `morvelin record`
struct RecordOptions {
    std::optional<std::string> display; ///< absent means the primary one
    std::optional<Seconds> seconds;     ///< absent means until Ctrl-C
};

/// `morvelin export`
struct ExportOptions {
    std::optional<std::filesystem::path> project; ///< absent means the project that changed last
    VideoQuality quality = VideoQuality::High;
    bool forAI = false;
    std::optional<std::filesystem::path> output;
};

/// Text to print before the program ends: help, the version, or what was wrong with the words typed.
struct ParsedText {
    std::string text;
    int exitStatus = 0;
};

using Command = std::variant<RecordOptions, ExportOptions, ParsedText>;

/// Reads the program's arguments, the program's name first.
[[nodiscard]] Command parseCommandLine(int argc, const char* const* argv);

} // namespace morvelin
