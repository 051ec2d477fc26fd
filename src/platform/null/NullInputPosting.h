// No input: stands in where events can't be posted, and says why.
#pragma once

#include "platform/InputPosting.h"

namespace morvelin {

class NullInputPosting final : public InputPosting {
public:
    explicit NullInputPosting(InputPostingError reason) : m_reason(std::move(reason)) {}

    Result<void, InputPostingError> check() override { return failure(m_reason); }
    std::optional<DesktopPoint> location() override { return std::nullopt; }
    void moveTo(DesktopPoint) override {}
    void press(PointerButton) override {}
    void release(PointerButton) override {}
    void turnWheel(WheelDirection, int) override {}
    void keyDown(Key) override {}
    void keyUp(Key) override {}
    Result<void, InputPostingError> type(char32_t) override { return failure(m_reason); }
    Seconds settlingTime(char32_t) override { return {}; }
    void focus(WindowID) override {}

private:
    InputPostingError m_reason;
};

} // namespace morvelin
