#include "render/FrameError.h"

#include <fmt/format.h>

namespace morvelin {

namespace {

struct Describe {
    std::string operator()(const FrameError::OutOfRange& error) const {
        const char* what = error.clock == FrameClock::Timeline ? "the edit timeline" : "the source recording";
        return fmt::format("{:.2f}s is outside {}, which is {:.2f}s long.", error.time, what, error.duration.value);
    }
    std::string operator()(const FrameError::DecodeFailed& error) const {
        return fmt::format("Could not decode the frame: {}", error.reason);
    }
    std::string operator()(const FrameError::NoRecording&) const {
        return "This project has no recording.mov to read a frame from.";
    }
    std::string operator()(const FrameError::EncodingFailed&) const { return "Could not encode the frame."; }
};

} // namespace

std::string FrameError::description() const { return std::visit(Describe{}, m_reason); }

} // namespace morvelin
