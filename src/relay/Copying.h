// Carries bytes from one descriptor to another until one of them ends.
#pragma once

#include <string_view>

namespace relay {

enum class CopyEnd {
    SourceEnded,  ///< and all it gave has been written
    SourceFailed, ///< errno tells why
    TargetFailed, ///< errno tells why
};

/// What to do when the source ends in the middle of a line.
enum class LastLine { AsItCame, EndedProperly };

/// Blocks while there is nothing to read, and while the target takes nothing, which is what holds up the source.
CopyEnd copyLines(int source, int target, LastLine lastLine);

/// False, with the reason in errno, when the target does not take all.
bool writeAll(int target, std::string_view bytes);

} // namespace relay
