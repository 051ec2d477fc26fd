#include "relay/Copying.h"

#include <array>
#include <cerrno>

#include <unistd.h>

namespace relay {

bool writeAll(int target, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(target, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR) return false;
        if (count > 0) bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

CopyEnd copyLines(int source, int target, LastLine lastLine) {
    std::array<char, 0x10000> buffer;
    bool isInLine = false;
    for (;;) {
        const ssize_t count = ::read(source, buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return CopyEnd::SourceFailed;
        if (count == 0) break;
        const std::string_view bytes(buffer.data(), static_cast<std::size_t>(count));
        if (!writeAll(target, bytes)) return CopyEnd::TargetFailed;
        isInLine = bytes.back() != '\n';
    }
    if (isInLine && lastLine == LastLine::EndedProperly && !writeAll(target, "\n")) return CopyEnd::TargetFailed;
    return CopyEnd::SourceEnded;
}

} // namespace relay
