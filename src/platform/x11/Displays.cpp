#include "platform/x11/Displays.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include <fmt/format.h>
#include <xcb/randr.h>

namespace morvelin {

namespace {

std::string nameOf(const X11Connection& connection, xcb_get_atom_name_cookie_t cookie) {
    const auto reply = owned(xcb_get_atom_name_reply(connection.get(), cookie, nullptr));
    if (!reply) return {};
    return {xcb_get_atom_name_name(reply.get()), static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get()))};
}

/// X knows one scale for all monitors, told by the density of text; 96 dots an inch is none. Small steps are a person's
/// taste in text, no scale.
double scaleOf(const X11Connection& connection) {
    const auto setting = connection.resource("Xft.dpi");
    if (!setting) return 1;
    double dotsPerInch = 0;
    const auto [end, error] = std::from_chars(setting->data(), setting->data() + setting->size(), dotsPerInch);
    if (error != std::errc() || !(dotsPerInch > 0)) return 1;
    return std::clamp(std::round(dotsPerInch / 96 * 4) / 4, 1.0, 4.0);
}

Result<std::vector<Display>, ScreenError> wholeDesktop(const X11Connection& connection) {
    const auto desktop = connection.desktop();
    if (!desktop) return failure(connection.lost());
    return std::vector<Display>{
        {.id = "screen", .frame = *desktop, .pointPixelScale = scaleOf(connection), .isPrimary = true}};
}

bool knowsMonitors(const X11Connection& connection) {
    if (!connection.hasExtension(xcb_randr_id)) return false;
    const auto version = owned(
        xcb_randr_query_version_reply(connection.get(), xcb_randr_query_version(connection.get(), 1, 5), nullptr));
    return version && (version->major_version > 1 || version->minor_version >= 5);
}

} // namespace

Result<std::vector<Display>, ScreenError> displaysOf(const X11Connection& connection) {
    if (!knowsMonitors(connection)) return wholeDesktop(connection);
    constexpr std::uint8_t kActiveOnly = 1;
    const auto reply = owned(xcb_randr_get_monitors_reply(
        connection.get(), xcb_randr_get_monitors(connection.get(), connection.root(), kActiveOnly), nullptr));
    if (!reply) return failure(connection.lost());

    const double scale = scaleOf(connection);
    std::vector<Display> displays;
    std::vector<xcb_get_atom_name_cookie_t> names;
    for (auto monitor = xcb_randr_get_monitors_monitors_iterator(reply.get()); monitor.rem > 0;
         xcb_randr_monitor_info_next(&monitor)) {
        names.push_back(xcb_get_atom_name(connection.get(), monitor.data->name));
        displays.push_back({.id = {},
                            .frame = {monitor.data->x, monitor.data->y, monitor.data->width, monitor.data->height},
                            .pointPixelScale = scale,
                            .isPrimary = monitor.data->primary != 0});
    }
    for (std::size_t index = 0; index < names.size(); ++index) displays[index].id = nameOf(connection, names[index]);
    std::erase_if(displays, [](const Display& display) { return display.frame.isEmpty(); });
    if (displays.empty()) return wholeDesktop(connection);
    return displays;
}

Result<Display, ScreenError> displayNamed(const X11Connection& connection, const std::string& id) {
    auto displays = displaysOf(connection);
    if (!displays) return passOn(std::move(displays));
    for (Display& display : *displays)
        if (display.id == id) return std::move(display);
    return failure(
        ScreenError{ScreenError::Kind::DisplayNotFound, fmt::format("The display “{}” is not connected.", id)});
}

} // namespace morvelin
