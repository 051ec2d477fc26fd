// The program's version, from the build.
#pragma once

namespace morvelin {

extern const char* const kVersion;

} // namespace morvelin
