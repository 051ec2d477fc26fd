// What the user typed, as values: one record per command.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "agent/ShellCompletion.h"
#include "capture/CaptureTarget.h"
#include "core/base/Time.h"
#include "platform/Picture.h"
#include "render/ExportSettings.h"

namespace morvelin {

/// `morvelin record`
struct RecordOptions {
    std::optional<std::string> display; ///< absent means the primary one
    std::optional<std::string> window;  ///< a window's title or number instead
    std::optional<PointRect> area;      ///< a rectangle instead: of the display where one is named, else of the desktop
    std::optional<Seconds> seconds;     ///< absent means until Ctrl-C
    bool systemAudio = false;
    std::optional<std::string> microphone; ///< its id; empty: the default one
    std::optional<std::string> camera;     ///< its id; empty: the first one
};

/// `morvelin devices`
struct DevicesOptions {};

/// `morvelin export`
struct ExportOptions {
    std::optional<std::string> project;  ///< absent means the project that changed last
    std::optional<ExportFormat> format;  ///< absent means that of the output's name, or else MP4
    std::optional<VideoQuality> quality; ///< absent means high
    bool forAI = false;
    std::optional<std::filesystem::path> output;
};

/// `morvelin recover`
struct RecoverOptions {};

/// `morvelin probe-encoder`, which the program runs by itself
struct ProbeEncoderOptions {
    std::string encoder;
};

/// `morvelin serve`
struct ServeOptions {};

/// `morvelin call`
struct CallOptions {
    std::string tool;
    std::vector<std::string> arguments;         ///< `name=value` each
    std::optional<std::filesystem::path> image; ///< where the answer's picture goes
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

/// `morvelin art`, for those who work on the program
struct ArtOptions {
    std::optional<std::string> background; ///< by itself; absent means a sheet of everything
    PixelSize size{1920, 1080};            ///< of a background by itself
    std::filesystem::path output = "art.png";
};

/// Text to print before the program ends: help, the version, or what was wrong with the words typed.
struct ParsedText {
    std::string text;
    int exitStatus = 0;
};

using Command = std::variant<RecordOptions, DevicesOptions, RecoverOptions, ProbeEncoderOptions, ExportOptions,
                             ServeOptions, CallOptions, ClientsOptions, CompletionOptions, ArtOptions, ParsedText>;

/// Reads the program's arguments, the program's name first.
[[nodiscard]] Command parseCommandLine(int argc, const char* const* argv);

/// The same commands as shells complete them.
[[nodiscard]] CompletedCommand commandTree();

} // namespace morvelin
