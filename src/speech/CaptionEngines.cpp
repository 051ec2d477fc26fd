#include "speech/CaptionEngines.h"

namespace morvelin {

std::string engineOf(const NarrationTake& take) {
    if (take.source != NarrationTake::Source::ElevenLabs) return std::string(kMicrophoneEngine);
    return std::string(kVoiceEngine) + take.modelID.value_or("tts");
}

bool isFromTake(std::string_view engine) { return engine == kMicrophoneEngine || engine.starts_with(kVoiceEngine); }

bool isFromRecordingAlone(std::string_view engine) {
    return !isFromTake(engine) && engine != kTracksEngine && engine != kWrittenEngine;
}

} // namespace morvelin
