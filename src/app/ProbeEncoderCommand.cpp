#include "app/Commands.h"
#include "media/FFmpegHardwareEncoder.h"

namespace morvelin {

int runProbeEncoder(const ProbeEncoderOptions& options) { return canEncode(options.encoder) ? kSuccess : kFailure; }

} // namespace morvelin
