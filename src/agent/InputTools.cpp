#include "agent/InputTools.h"

#include <fmt/format.h>

#include "agent/PointerArguments.h"
#include "core/base/Graphemes.h"

namespace morvelin {

namespace {

constexpr double kUsualMove = 0.35;
constexpr double kUsualDrag = 0.6;
constexpr double kUsualScroll = 0.7;
constexpr double kUsualDelay = 0.012;
constexpr double kLongestWait = 30;
constexpr std::int64_t kMostClicks = 100;

/// The facts of a gesture that was played, or why it was not.
ToolOutcome outcomeOf(const Gestures::Played& played, JSONValue facts) {
    if (!played) return refusal(played.error());
    return facts;
}

MCPToolResult answer(const ScreenCapturer::Shot& shot, bool isRecording) {
    std::string text = fmt::format(
        "{}×{} screenshot of {}. Positions are normalized 0–1 from the top-left of this image{}.", shot.size.width,
        shot.size.height, shot.space.label, isRecording ? ", which is the area being recorded" : "");
    JSONValue facts{{"width", shot.size.width},
                    {"height", shot.size.height},
                    {"display", shot.space.label},
                    {"pointer_space",
                     {{"x", shot.space.rect.x},
                      {"y", shot.space.rect.y},
                      {"width", shot.space.rect.width},
                      {"height", shot.space.rect.height},
                      {"label", shot.space.label}}}};
    return {std::move(text), false, std::move(facts), std::string(shot.pngData.begin(), shot.pngData.end())};
}

} // namespace

void InputTools::addTo(CommandTable& commands) {
    commands.addCommand("screenshot", [this](JSONValue arguments) { return pacedScreenshot(std::move(arguments)); });
    add(commands, "move_mouse", &InputTools::moveMouse);
    add(commands, "click", &InputTools::click);
    add(commands, "drag", &InputTools::drag);
    add(commands, "scroll", &InputTools::scroll);
    add(commands, "type", &InputTools::type);
    add(commands, "press_key", &InputTools::pressKey);
    add(commands, "wait", &InputTools::wait);
}

void InputTools::addWithoutDesktop(CommandTable& commands) {
    for (const char* name : {"screenshot", "move_mouse", "click", "drag", "scroll", "type", "press_key", "wait"})
        commands.add(name, [](const ArgumentReader&) -> ToolOutcome {
            return refusal(InputError(InputError::PostingUnavailable{
                "No running Morvelin controls this desktop. Start “morvelin serve” in it, then try again."}));
        });
}

void InputTools::add(CommandTable& commands, const char* name, Tool tool) {
    commands.addWaiting(name, [this, tool](JSONValue arguments) { return paced(tool, std::move(arguments)); });
}

Task<ToolOutcome> InputTools::paced(Tool tool, JSONValue arguments) {
    m_pacer.beforeAction();
    ToolOutcome outcome = co_await (this->*tool)(std::move(arguments));
    m_pacer.afterAction();
    co_return outcome;
}

Task<MCPToolResult> InputTools::pacedScreenshot(JSONValue arguments) {
    if (m_isCapturingScreenshot)
        co_return MCPToolResult::failed(MCPToolError(MCPToolError::OperationInProgress{"screenshot"}).description());
    m_isCapturingScreenshot = true;
    m_pacer.beforeAction();
    MCPToolResult result = co_await screenshot(std::move(arguments));
    m_pacer.afterAction();
    m_isCapturingScreenshot = false;
    co_return result;
}

Task<MCPToolResult> InputTools::screenshot(JSONValue arguments) {
    const bool isRecording = m_services.host.recordedSpace().has_value();
    const auto space = spaceArgument(ArgumentReader(arguments), m_services.host);
    if (!space) {
        if (const auto* gone = std::get_if<NoDisplay>(&space.error()))
            co_return MCPToolResult::failed(
                ScreenCaptureError(ScreenCaptureError::DisplayNotFound{gone->id}).description());
        co_return MCPToolResult::failed(std::get<std::string>(space.error()));
    }
    const auto shot = co_await m_services.screen.capture(*space);
    if (!shot) co_return MCPToolResult::failed(shot.error().description());
    co_return answer(*shot, isRecording);
}

Result<PointerSpace, std::string> InputTools::spaceOf(const ArgumentReader& arguments) {
    if (auto posting = requirePosting(); !posting) return passOn(std::move(posting));
    auto space = spaceArgument(arguments, m_services.host);
    if (space) return std::move(*space);
    const auto* gone = std::get_if<NoDisplay>(&space.error());
    if (gone == nullptr) return failure(std::get<std::string>(space.error()));
    const std::string reason = gone->id ? fmt::format("display {} is not connected", *gone->id)
                                        : "no display is available";
    return refusal(InputError(InputError::NoSpace{reason}));
}

Result<InputTools::Aim, std::string> InputTools::aim(const ArgumentReader& arguments, NormalizedPoint position) {
    auto space = spaceOf(arguments);
    if (!space) return passOn(std::move(space));
    const DesktopPoint point = space->at(position);
    return Aim{std::move(*space), point};
}

/// Told before anything else of a desktop that can't be reached: what is missing explains all that follows from it.
Result<void, std::string> InputTools::requirePosting() {
    if (auto checked = m_services.posting.check(); !checked) return refusal(InputError(std::move(checked).error()));
    return {};
}

Task<ToolOutcome> InputTools::moveMouse(JSONValue arguments) {
    const ArgumentReader reader(arguments);
    const auto position = positionArgument(reader, "x", "y");
    if (!position) co_return failure(position.error());
    const auto target = aim(reader, *position);
    if (!target) co_return failure(target.error());
    const Seconds duration = durationArgument(reader, kUsualMove);
    const auto played = co_await m_gestures.move(target->point, duration);
    const auto facts = [&] {
        return JSONValue{{"moved", true},
                         {"x", position->x},
                         {"y", position->y},
                         {"duration", duration.value},
                         {"space", target->space.label}};
    };
    co_return outcomeOf(played, facts());
}

Task<ToolOutcome> InputTools::click(JSONValue arguments) {
    const ArgumentReader reader(arguments);
    const auto position = positionArgument(reader, "x", "y");
    if (!position) co_return failure(position.error());
    const auto button = buttonArgument(reader);
    if (!button) co_return failure(button.error());
    const auto count = static_cast<int>(std::clamp(reader.integer("count").value_or(1), std::int64_t{1}, kMostClicks));
    const auto target = aim(reader, *position);
    if (!target) co_return failure(target.error());
    const auto played = co_await m_gestures.click(target->point, *button, count);
    const auto facts = [&] {
        return JSONValue{{"clicked", nameOf(*button)},
                         {"count", count},
                         {"x", position->x},
                         {"y", position->y},
                         {"space", target->space.label}};
    };
    co_return outcomeOf(played, facts());
}

Task<ToolOutcome> InputTools::drag(JSONValue arguments) {
    const ArgumentReader reader(arguments);
    const auto from = positionArgument(reader, "from_x", "from_y");
    if (!from) co_return failure(from.error());
    const auto to = positionArgument(reader, "to_x", "to_y");
    if (!to) co_return failure(to.error());
    const auto button = buttonArgument(reader);
    if (!button) co_return failure(button.error());
    const auto start = aim(reader, *from);
    if (!start) co_return failure(start.error());
    const Seconds duration = std::max(durationArgument(reader, kUsualDrag), Gestures::kShortestDrag);
    const auto played = co_await m_gestures.drag(start->point, start->space.at(*to), *button, duration);
    const auto facts = [&] {
        return JSONValue{{"dragged", nameOf(*button)}, {"duration", duration.value}, {"space", start->space.label}};
    };
    co_return outcomeOf(played, facts());
}

Task<ToolOutcome> InputTools::scroll(JSONValue arguments) {
    const ArgumentReader reader(arguments);
    const auto distance = distanceArgument(reader);
    if (!distance) co_return failure(distance.error());
    std::optional<DesktopPoint> place;
    if (reader.member("x") != nullptr || reader.member("y") != nullptr) {
        const auto position = positionArgument(reader, "x", "y");
        if (!position) co_return failure(position.error());
        const auto target = aim(reader, *position);
        if (!target) co_return failure(target.error());
        place = target->point;
    }
    const Seconds duration = durationArgument(reader, kUsualScroll);
    const auto played = co_await m_gestures.scroll(place, *distance, duration);
    const auto facts = [&] {
        return JSONValue{{"dx", distance->dx}, {"dy", distance->dy}, {"duration", duration.value}};
    };
    co_return outcomeOf(played, facts());
}

Task<ToolOutcome> InputTools::type(JSONValue arguments) {
    const ArgumentReader reader(arguments);
    const auto text = reader.text("text");
    if (!text || text->empty()) co_return invalidArgument("text", "expected something to type");
    const Seconds delay(std::clamp(reader.number("delay").value_or(kUsualDelay), 0.0, 1.0));
    auto characters = graphemes(*text);
    const std::size_t count = characters.size();
    const auto played = co_await m_gestures.type(std::move(characters), delay);
    const auto facts = [&] { return JSONValue{{"typed", count}}; };
    co_return outcomeOf(played, facts());
}

Task<ToolOutcome> InputTools::pressKey(JSONValue arguments) {
    const ArgumentReader reader(arguments);
    const auto key = reader.text("key");
    if (!key || key->empty()) co_return invalidArgument("key", "expected a key to press");
    const auto modifiers = modifiersArgument(reader);
    const auto chord = parseKeyChord(*key, modifiers);
    if (!chord) co_return refusal(chord.error());
    const auto played = co_await m_gestures.press(*chord);
    const auto facts = [&] { return JSONValue{{"pressed", chord->name()}}; };
    co_return outcomeOf(played, facts());
}

Task<ToolOutcome> InputTools::wait(JSONValue arguments) {
    const auto seconds = ArgumentReader(arguments).number("seconds");
    if (!seconds) co_return invalidArgument("seconds", "expected a number of seconds");
    const Seconds length(std::clamp(*seconds, 0.0, kLongestWait));
    co_await m_services.loop.sleep(length);
    const auto facts = [&] { return JSONValue{{"waited", length.value}}; };
    co_return facts();
}

} // namespace morvelin
