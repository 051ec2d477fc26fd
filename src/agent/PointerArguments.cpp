#include "agent/PointerArguments.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

#include <fmt/format.h>

#include "agent/CommandTable.h"

namespace morvelin {

namespace {

constexpr double kLongestGesture = 30;
constexpr double kFarthestScroll = 100'000;

constexpr auto kButtons = std::to_array<std::pair<std::string_view, PointerButton>>(
    {{"left", PointerButton::Left}, {"right", PointerButton::Right}, {"middle", PointerButton::Middle}});

Result<void, std::string> requireFraction(const std::string& name, double value) {
    if (value >= 0 && value <= 1) return {};
    return invalidArgument(name,
                           fmt::format("{:.1f} is outside 0–1. These are fractions of the screen, not pixels.", value));
}

int pixelsArgument(const ArgumentReader& arguments, const char* name) {
    const double pixels = std::clamp(arguments.number(name).value_or(0), -kFarthestScroll, kFarthestScroll);
    return static_cast<int>(pixels);
}

} // namespace

Result<NormalizedPoint, std::string> positionArgument(const ArgumentReader& arguments, const std::string& xName,
                                                      const std::string& yName) {
    const auto x = arguments.number(xName.c_str());
    const auto y = arguments.number(yName.c_str());
    if (!x || !y)
        return invalidArgument(
            xName + "/" + yName,
            "expected normalized 0–1 coordinates, top-left origin. Take a screenshot to see where things are");
    if (auto inside = requireFraction(xName, *x); !inside) return passOn(std::move(inside));
    if (auto inside = requireFraction(yName, *y); !inside) return passOn(std::move(inside));
    return NormalizedPoint{*x, *y};
}

Seconds durationArgument(const ArgumentReader& arguments, double otherwise) {
    return Seconds(std::clamp(arguments.number("duration").value_or(otherwise), 0.0, kLongestGesture));
}

Result<PointerButton, std::string> buttonArgument(const ArgumentReader& arguments) {
    const JSONValue* given = arguments.member("button");
    if (given == nullptr) return PointerButton::Left;
    for (const auto& [name, button] : kButtons)
        if (*given == name) return button;
    return refusal(InputError(InputError::UnknownButton{arguments.text("button").value_or(given->dump())}));
}

std::string nameOf(PointerButton button) {
    const auto found = std::ranges::find(kButtons, button, &std::pair<std::string_view, PointerButton>::second);
    return std::string(found->first);
}

Result<Gestures::Distance, std::string> distanceArgument(const ArgumentReader& arguments) {
    const Gestures::Distance distance{pixelsArgument(arguments, "dx"), pixelsArgument(arguments, "dy")};
    if (distance.dx == 0 && distance.dy == 0) return invalidArgument("dx/dy", "expected a distance to scroll");
    return distance;
}

std::vector<std::string> modifiersArgument(const ArgumentReader& arguments) {
    const JSONValue* given = arguments.member("modifiers");
    if (given == nullptr) return {};
    const auto textOf = [](const JSONValue& value) {
        return value.is_string() ? value.get<std::string>() : value.dump();
    };
    if (!given->is_array()) return {textOf(*given)};
    std::vector<std::string> modifiers;
    for (const JSONValue& each : *given) modifiers.push_back(textOf(each));
    return modifiers;
}

Result<PointerSpace, std::variant<std::string, NoDisplay>> spaceArgument(const ArgumentReader& arguments,
                                                                         MCPHost& host) {
    using Refusal = std::variant<std::string, NoDisplay>;
    if (auto recorded = host.recordedSpace()) return std::move(*recorded);
    const auto id = arguments.integer("display_id");
    if (!id && arguments.member("display_id") != nullptr)
        return failure(
            Refusal(invalidArgument("display_id", "expected a display ID from recording_status.displays").error()));
    const auto displays = host.displays();
    const auto found = std::ranges::find_if(
        displays, [&](const MCPDisplay& display) { return id ? display.id == *id : display.isMain; });
    if (found != displays.end()) return PointerSpace{found->frame, found->name};
    if (!id && !displays.empty()) return PointerSpace{displays.front().frame, displays.front().name};
    return failure(Refusal(NoDisplay{id}));
}

} // namespace morvelin
