#include "core/base/Log.h"

#include <cstdio>
#include <string>

namespace morvelin {

namespace {

/// One write for the whole line, so that lines of several threads don't mix, and a flush, so that a kill loses none.
Log logTo(std::FILE* stream) {
    return [stream](std::string_view line) {
        const std::string whole = std::string(line) + '\n';
        (void)std::fwrite(whole.data(), 1, whole.size(), stream);
        (void)std::fflush(stream);
    };
}

} // namespace

Log standardOutputLog() { return logTo(stdout); }
Log standardErrorLog() { return logTo(stderr); }

} // namespace morvelin
