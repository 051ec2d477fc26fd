// Where a caption track's words came from, as its `engine` tells.
#pragma once

#include <string>
#include <string_view>

#include "narration/NarrationTake.h"

namespace morvelin {

inline constexpr std::string_view kMicrophoneEngine = "narration"; ///< a recorded take
inline constexpr std::string_view kVoiceEngine = "elevenlabs/";    ///< a generated take; its model's id follows
inline constexpr std::string_view kTracksEngine = "tracks";        ///< composed of several tracks
inline constexpr std::string_view kWrittenEngine = "narrate";      ///< a transcript that was written, not heard

[[nodiscard]] std::string engineOf(const NarrationTake& take);

/// Whether the words were heard in the recording's own sound, and in nothing else. Any engine that is none of the above
/// is a recogniser.
[[nodiscard]] bool isFromRecordingAlone(std::string_view engine);
/// Whether the words are those of one take.
[[nodiscard]] bool isFromTake(std::string_view engine);

} // namespace morvelin
