// A pointer that tests move by hand.
#pragma once

#include <functional>
#include <optional>

#include "platform/Pointer.h"

namespace morvelin {

class InMemoryPointer final : public PointerSource {
public:
    std::optional<DesktopPoint> location() override { return place; }
    std::optional<std::uint64_t> shapeIdentity() override {
        return shown.transform([](const PointerShape& shape) { return shape.identity; });
    }
    std::optional<PointerShape> shape() override {
        ++shapeQuestions;
        return shown;
    }
    std::optional<PointerShape> arrow() override { return systemArrow; }
    EventLoop::Timer onButton(EventLoop&, std::function<void(const PointerButtonEvent&)> action) override {
        button = std::move(action);
        return EventLoop::Timer([this] { button = nullptr; });
    }

    std::optional<DesktopPoint> place = DesktopPoint{};
    std::optional<PointerShape> shown;
    std::optional<PointerShape> systemArrow;
    std::function<void(const PointerButtonEvent&)> button; ///< set while somebody listens
    int shapeQuestions = 0;
};

} // namespace morvelin
