// No screen: stands in where no display server can be reached, so that the program starts and can say what is missing.
#pragma once

#include "platform/Screen.h"

namespace morvelin {

class NullScreenSource final : public ScreenSource {
public:
    /// `reason` is why there is no screen; every question is answered with it.
    explicit NullScreenSource(ScreenError reason) : m_reason(std::move(reason)) {}

    Result<std::vector<Display>, ScreenError> displays() override { return failure(m_reason); }
    Result<std::vector<DesktopWindow>, ScreenError> windows() override { return failure(m_reason); }
    std::optional<PixelBox> windowFrame(WindowID) override { return std::nullopt; }
    Result<std::unique_ptr<ScreenStream>, ScreenError> open(const ScreenStreamOptions&) override {
        return failure(m_reason);
    }

private:
    ScreenError m_reason;
};

} // namespace morvelin
