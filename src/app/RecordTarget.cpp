#include "app/RecordTarget.h"

#include <charconv>

#include <fmt/format.h>

namespace morvelin {

namespace {

/// A window's number as tools write it, 0x1400003 or 20971523.
std::optional<WindowID> windowNumber(std::string_view text) {
    const bool isHexadecimal = text.starts_with("0x") || text.starts_with("0X");
    if (isHexadecimal) text.remove_prefix(2);
    WindowID id = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), id, isHexadecimal ? 16 : 10);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return id;
}

std::string list(const std::vector<Display>& displays) {
    std::string text = "Displays, in points:\n";
    for (const Display& display : displays) {
        const auto points = [&](int pixels) { return pixels / display.pointPixelScale; };
        const PixelBox& frame = display.frame;
        text += fmt::format("  {}  {},{},{},{}{}\n", display.id, points(frame.x), points(frame.y), points(frame.width),
                            points(frame.height), display.isPrimary ? "  primary" : "");
    }
    return text;
}

std::string list(const std::vector<DesktopWindow>& windows) {
    if (windows.empty()) return "No windows show.\n";
    std::string text = "Windows:\n";
    for (const DesktopWindow& window : windows)
        text += fmt::format("  {:#x}  “{}”  {}\n", window.id, window.title, window.application);
    return text;
}

} // namespace

CaptureTarget targetOf(const RecordOptions& options) {
    if (options.window) return WindowTarget{*options.window, windowNumber(*options.window)};
    if (options.area) return AreaTarget{*options.area, options.display.value_or("")};
    return DisplayTarget{options.display.value_or("")};
}

std::string choicesFor(const CaptureTarget& target, ScreenSource& screen) {
    if (std::holds_alternative<WindowTarget>(target)) {
        const auto windows = screen.windows();
        return windows ? list(*windows) : std::string();
    }
    const auto displays = screen.displays();
    return displays ? list(*displays) : std::string();
}

} // namespace morvelin
