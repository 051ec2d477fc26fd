// A virtual display, what is drawn on it, and the program's own connection to it.
#pragma once

#include <memory>
#include <optional>

#include <gtest/gtest.h>

#include "platform/x11/X11ScreenSource.h"
#include "x11/Desktop.h"
#include "x11/VirtualDisplay.h"

namespace morvelin {

class ScreenFixture : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_FALSE(display.name().empty()) << "Xvfb is missing";
        desktop.emplace(display.name());
        auto connected = X11ScreenSource::connect(display.name());
        ASSERT_TRUE(connected) << connected.error().description();
        source = std::move(*connected);
    }

    VirtualDisplay display;
    std::optional<Desktop> desktop;
    std::unique_ptr<X11ScreenSource> source;
};

} // namespace morvelin
