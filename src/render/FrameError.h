// Why there is no still of a project at a moment, in the words that an agent reads.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>

#include "core/base/Time.h"

namespace morvelin {

/// The clock on which a moment is given.
enum class FrameClock { Timeline, Source };

constexpr auto rawValues(std::type_identity<FrameClock>) {
    using enum FrameClock;
    return std::to_array<std::pair<FrameClock, std::string_view>>({{Timeline, "timeline"}, {Source, "source"}});
}

class FrameError {
public:
    struct OutOfRange {
        double time = 0;
        Seconds duration; ///< of the clock's whole span
        FrameClock clock = FrameClock::Timeline;
    };
    struct DecodeFailed {
        std::string reason;
    };
    struct NoRecording {};
    struct EncodingFailed {};
    using Reason = std::variant<OutOfRange, DecodeFailed, NoRecording, EncodingFailed>;

    FrameError(Reason reason) : m_reason(std::move(reason)) {}

    [[nodiscard]] const Reason& reason() const { return m_reason; }
    [[nodiscard]] std::string description() const;

private:
    Reason m_reason;
};

} // namespace morvelin
