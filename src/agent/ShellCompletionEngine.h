// The fixed part of each shell's completion script: from the words typed so far to a place in the table.
//
// A script has a table, a function that prints the lines "word, tab, description" of a place and fails where there is no
// such place. These are its places; PATH is the names of the commands typed, with blanks between them:
//
//     command:PATH            there is such a command
//     commands:PATH           its commands
//     options:PATH            its options
//     value:PATH OPTION       that option takes a value, out of these
//     operand:PATH N          its N-th operand, from 1
//     tool:PATH               its first operand is a tool, the others are that tool's arguments
//     arguments:TOOL          "name=" of each argument
//     argument:TOOL NAME      the argument's values
//
// The word "@files" stands for the names of files.
#pragma once

#include <string_view>

#include "agent/ShellCompletion.h"

namespace morvelin {

[[nodiscard]] std::string_view completionEngine(Shell shell);

} // namespace morvelin
