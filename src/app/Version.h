// The program's version, from the build.
#pragma once

namespace morvelin {

#ifdef MORVELIN_VERSION
inline constexpr const char* kVersion = MORVELIN_VERSION;
#else
inline constexpr const char* kVersion = "dev";
#endif

} // namespace morvelin
