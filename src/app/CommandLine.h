// What the user typed, as values: one record per command.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "agent/ShellCompletion.h"
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
    std::optional<std::string> project; ///< absent means the project that changed last
    VideoQuality quality = VideoQuality::High;
    bool forAI = false;
    std::optional<std::filesystem::path> output;
};

/// `morvelin serve`
struct ServeOptions {};

/// `morvelin call`
struct CallOptions {
    std::string tool;
    std::vector<std::string> arguments; ///< `name=value` each
};

/// `morvelin clients`
struct ClientsOptions {
    enum class Action { List, Allow, Revoke, Install, Uninstall };

    Action action = Action::List;
    std::string name; ///< of the client; empty for `List`
};

/// `morvelin completion`
struct CompletionOptions {
    Shell shell = Shell::Bash;
};

/// Text to print before the program ends: help, the version, or what was wrong with the words typed.
struct ParsedText {
    std::string text;
    int exitStatus = 0;
};

using Command = std::variant<RecordOptions, ExportOptions, ServeOptions, CallOptions, ClientsOptions, CompletionOptions,
                             ParsedText>;

/// Reads the program's arguments, the program's name first.
[[nodiscard]] Command parseCommandLine(int argc, const char* const* argv);

/// The same commands as shells complete them.
[[nodiscard]] CompletedCommand commandTree();

} // namespace morvelin
