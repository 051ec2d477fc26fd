// Why there is no still of the screen, in the words that an agent reads.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

namespace morvelin {

class ScreenCaptureError {
public:
    struct DisplayNotFound {
        std::optional<std::int64_t> id; ///< absent: there is no display at all
    };
    struct CaptureFailed {
        std::string reason;
    };
    struct PermissionDenied {};
    struct EncodingFailed {};
    using Reason = std::variant<DisplayNotFound, CaptureFailed, PermissionDenied, EncodingFailed>;

    ScreenCaptureError(Reason reason) : m_reason(std::move(reason)) {}

    [[nodiscard]] std::string description() const;

private:
    Reason m_reason;
};

} // namespace morvelin
