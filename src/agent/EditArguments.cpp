#include "agent/EditArguments.h"

#include <algorithm>

#include <fmt/ranges.h>

#include "agent/CommandTable.h"
#include "agent/HeadlessEditError.h"

namespace morvelin {

namespace {

constexpr double kLeastSide = 0.02;
constexpr double kTolerance = 1e-9;

} // namespace

Result<std::optional<double>, std::string> rangedNumber(const ArgumentReader& arguments, const char* name, double low,
                                                        double high) {
    const auto value = arguments.number(name);
    if (!value) return std::optional<double>();
    if (*value < low - kTolerance || *value > high + kTolerance)
        return refusal(HeadlessEditError(HeadlessEditError::SettingOutOfRange{name, *value, low, high}));
    return std::optional(std::clamp(*value, low, high));
}

std::optional<double> fractionArgument(const ArgumentReader& arguments, const char* name) {
    const auto value = arguments.number(name);
    return value ? std::optional(std::clamp(*value, 0.0, 1.0)) : std::nullopt;
}

std::optional<bool> givenFlag(const ArgumentReader& arguments, const char* name) {
    const bool value = arguments.flag(name, false);
    return value == arguments.flag(name, true) ? std::optional(value) : std::nullopt;
}

Result<std::optional<ZoomTransitionType>, std::string> curveArgument(const ArgumentReader& arguments) {
    const auto word = arguments.text("curve");
    if (!word) return std::optional<ZoomTransitionType>();
    const auto curve = json::fromRawValue<ZoomTransitionType>(*word);
    if (!curve) return invalidArgument("curve", "expected smooth or linear");
    return std::optional(*curve);
}

Result<std::optional<NormalizedPoint>, std::string> focalPoint(const ArgumentReader& arguments) {
    const auto x = fractionArgument(arguments, "x");
    const auto y = fractionArgument(arguments, "y");
    if (!x && !y) return std::optional<NormalizedPoint>();
    if (!x || !y) return invalidArgument("x/y", "a focal point needs both x and y");
    return std::optional(NormalizedPoint{*x, *y});
}

std::optional<NormalizedRect> rectArgument(const ArgumentReader& arguments) {
    const JSONValue* value = arguments.member("rect");
    if (value == nullptr) return std::nullopt;
    const ArgumentReader members(*value);
    const auto x = members.number("x");
    const auto y = members.number("y");
    const auto width = members.number("width");
    const auto height = members.number("height");
    if (!x || !y || !width || !height) return std::nullopt;
    return NormalizedRect{std::clamp(*x, 0.0, 1.0), std::clamp(*y, 0.0, 1.0), std::clamp(*width, kLeastSide, 1.0),
                          std::clamp(*height, kLeastSide, 1.0)};
}

Result<UUID, std::string> listedID(const ArgumentReader& arguments) {
    const auto id = UUID::parse(arguments.text("id").value_or(""));
    if (!id) return invalidArgument("id", "expected an id from describe_project");
    return *id;
}

std::string expectedOneOf(const char* name, const std::vector<std::string>& words) {
    const std::string reason = fmt::format("expected one of {}", fmt::join(words, ", "));
    return MCPToolError(MCPToolError::InvalidArgument{name, reason}).description();
}

} // namespace morvelin
