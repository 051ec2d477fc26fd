// No pointer: stands in where no display server can be reached.
#pragma once

#include "platform/Pointer.h"

namespace morvelin {

class NullPointerSource final : public PointerSource {
public:
    [[nodiscard]] std::optional<DesktopPoint> location() override { return std::nullopt; }
    [[nodiscard]] std::optional<std::uint64_t> shapeIdentity() override { return std::nullopt; }
    [[nodiscard]] std::optional<PointerShape> shape() override { return std::nullopt; }
    [[nodiscard]] std::optional<PointerShape> arrow() override { return std::nullopt; }
    [[nodiscard]] EventLoop::Timer onButton(EventLoop&, std::function<void(const PointerButtonEvent&)>) override {
        return {};
    }
};

} // namespace morvelin
