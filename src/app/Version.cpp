#include "app/Version.h"

namespace morvelin {

const char* const kVersion = MORVELIN_VERSION;

} // namespace morvelin
