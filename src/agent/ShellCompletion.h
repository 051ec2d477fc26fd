// Completion scripts for the user's shell: they know the commands, the tools, and each tool's arguments and their values.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "agent/ToolCatalogue.h"

namespace morvelin {

enum class Shell { Bash, Zsh, Fish };

constexpr auto rawValues(std::type_identity<Shell>) {
    using enum Shell;
    return std::to_array<std::pair<Shell, std::string_view>>({{Bash, "bash"}, {Zsh, "zsh"}, {Fish, "fish"}});
}

/// What may stand at one place of the command line.
struct CompletedWord {
    enum class Kind {
        None,          ///< nothing: the option is a flag
        Text,          ///< something that no shell can know
        File,          ///< a file or folder
        Choice,        ///< one of `choices`
        ToolArguments, ///< a tool's name, and after it that tool's `name=value`, any number of them
    };

    Kind kind = Kind::None;
    std::vector<std::string> choices;
};

struct CompletedOption {
    std::string name; ///< with its dashes
    std::string description;
    CompletedWord value;
};

/// One command; a command with commands of its own takes no operands.
struct CompletedCommand {
    std::string name;
    std::string description;
    std::vector<CompletedOption> options;
    std::vector<CompletedWord> operands;
    std::vector<CompletedCommand> commands;
};

/// The script that the shell is to read, for the command `morvelin`, whose command line `program` is.
[[nodiscard]] std::string completionScript(Shell shell, const CompletedCommand& program,
                                           const std::vector<MCPTool>& tools);

} // namespace morvelin
