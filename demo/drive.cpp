// demo-drive: plays a script of pointer and keyboard input on an X display, as a calm person would move.
// The script's commands stand in Story.h.

#include "InputDevice.h"
#include "Story.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <numbers>
#include <thread>

#include <fmt/core.h>

namespace morvelin {
namespace {

using Clock = std::chrono::steady_clock;
using Outcome = std::expected<void, std::string>;

constexpr double kStepLength = 1.0 / 120; // seconds between two places of a moving pointer
constexpr double kPressLength = 0.08;     // how long a finger rests on a button
constexpr double kDoubleClickGap = 0.09;  // between the two clicks
constexpr double kKeyLength = 0.02;       // how long a key stays down
constexpr double kUsualKeystroke = 0.065; // seconds a character, where the script gives no time
constexpr double kGripPause = 0.12;       // before a drag sets off and before it lets go

/// Minimum-jerk profile, the way a hand speeds up and slows down: Flash and Hogan 1985.
double eased(double t) { return t * t * t * (10 + t * (6 * t - 15)); }

/// The quadratic Bézier from `a` to `b` whose middle is bent to one side, since an arm swings from its elbow.
Spot onArc(Spot a, Spot b, double t) {
    constexpr double kBend = 0.12;
    const Spot bend{(a.x + b.x) / 2 + (b.y - a.y) * kBend, (a.y + b.y) / 2 - (b.x - a.x) * kBend};
    const double u = 1 - t;
    return {u * u * a.x + 2 * u * t * bend.x + t * t * b.x, u * u * a.y + 2 * u * t * bend.y + t * t * b.y};
}

/// Plays the steps in order on one device. Times add up from the start, so that a slow call does not push back the rest.
class Player {
public:
    explicit Player(InputDevice device) : m_device(std::move(device)) {}

    Outcome play(const std::vector<StoryStep>& steps) {
        m_now = Clock::now();
        for (const StoryStep& step : steps) {
            if (Outcome done = std::visit([this](const auto& s) { return run(s); }, step); !done) return done;
            if (!m_device.settle()) return std::unexpected("The X display went away.");
        }
        return {};
    }

private:
    void pause(double seconds) {
        m_now += std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
        std::this_thread::sleep_until(m_now);
    }

    /// Calls `place` with 0..1 in small steps of time.
    template <typename Place>
    void glide(double seconds, Place place) {
        const int count = std::max(1, static_cast<int>(std::lround(seconds / kStepLength)));
        for (int i = 1; i <= count; ++i) {
            pause(seconds / count);
            place(static_cast<double>(i) / count);
        }
    }

    Outcome run(const Step::Await& step) {
        const auto deadline = Clock::now() + std::chrono::duration<double>(step.within);
        while (!m_device.showsWindow(step.title)) {
            if (Clock::now() > deadline)
                return std::unexpected(
                    fmt::format("No window with the title \"{}\" appeared within {} s.", step.title, step.within));
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        m_now = Clock::now();
        return {};
    }

    Outcome run(const Step::Move& step) {
        const Spot from = m_device.position();
        glide(step.over, [&](double t) { m_device.moveTo(onArc(from, step.to, eased(t))); });
        return {};
    }

    Outcome run(const Step::Press& step) {
        m_device.press(step.button);
        return {};
    }

    Outcome run(const Step::Release& step) {
        m_device.release(step.button);
        return {};
    }

    Outcome run(const Step::Click& step) {
        m_device.press(step.button);
        pause(kPressLength);
        m_device.release(step.button);
        return {};
    }

    Outcome run(const Step::DoubleClick& step) {
        if (Outcome first = run(Step::Click{step.button}); !first) return first;
        pause(kDoubleClickGap);
        return run(Step::Click{step.button});
    }

    Outcome run(const Step::Drag& step) {
        m_device.press(Button::left);
        pause(kGripPause);
        const Spot from = m_device.position();
        // A grip is led straight: what is dragged is mostly a line or a window.
        glide(step.over, [&](double t) {
            const double s = eased(t);
            m_device.moveTo({from.x + s * (step.to.x - from.x), from.y + s * (step.to.y - from.y)});
        });
        pause(kGripPause);
        m_device.release(Button::left);
        return {};
    }

    /// Starts where the pointer is and winds onto the ellipse within the first quarter turn.
    Outcome run(const Step::Circle& step) {
        const Spot from = m_device.position();
        const Spot start{(from.x - step.centre.x) / step.radii.x, (from.y - step.centre.y) / step.radii.y};
        const double startAngle = std::atan2(start.y, start.x);
        const double startRadius = std::hypot(start.x, start.y);
        glide(step.over, [&](double t) {
            // Half eased: a gesture starts and ends softly, but runs evenly in between.
            const double angle = 2 * std::numbers::pi * step.turns * (t + eased(t)) / 2;
            const double radius = std::lerp(startRadius, 1.0, eased(std::min(1.0, angle * 2 / std::numbers::pi)));
            m_device.moveTo({step.centre.x + step.radii.x * radius * std::cos(startAngle + angle),
                             step.centre.y + step.radii.y * radius * std::sin(startAngle + angle)});
        });
        return {};
    }

    Outcome run(const Step::Scroll& step) {
        const int count = std::abs(step.notches);
        double before = 0;
        for (int i = 1; i <= count; ++i) {
            // A finger on the wheel speeds up and slows down too; a cosine's ease has an inverse in closed form.
            const double at = std::acos(1 - 2 * static_cast<double>(i) / count) / std::numbers::pi * step.over;
            pause(at - before);
            before = at;
            step.notches > 0 ? m_device.wheelUp() : m_device.wheelDown();
        }
        return {};
    }

    Outcome run(const Step::Type& step) {
        const double usual = step.over > 0 ? step.over / static_cast<double>(step.text.size()) : kUsualKeystroke;
        size_t place = 0;
        for (const char32_t character : step.text) {
            const auto stroke = m_device.keystrokeOf(character);
            if (!stroke)
                return std::unexpected(
                    fmt::format("U+{:04X} cannot be typed: {}.", static_cast<uint32_t>(character), stroke.error()));
            // Typing has a rhythm. It repeats, so that a script plays the same every time.
            constexpr double kRhythm[] = {1.1, 0.8, 1.0, 1.25, 0.85};
            if (stroke->shifted) m_device.keyDown(m_device.shiftKey());
            m_device.keyDown(stroke->code);
            pause(std::min(kKeyLength, usual / 2));
            m_device.keyUp(stroke->code);
            if (stroke->shifted) m_device.keyUp(m_device.shiftKey());
            pause(usual * kRhythm[place++ % std::size(kRhythm)] - std::min(kKeyLength, usual / 2));
        }
        return {};
    }

    Outcome run(const Step::Key& step) {
        std::vector<xcb_keycode_t> codes;
        for (const std::string& name : step.names) {
            const auto stroke = m_device.keystrokeNamed(name);
            if (!stroke) return std::unexpected(fmt::format("Cannot press the key: {}.", stroke.error()));
            if (stroke->shifted) codes.push_back(m_device.shiftKey());
            codes.push_back(stroke->code);
        }
        for (const xcb_keycode_t code : codes) m_device.keyDown(code);
        pause(kPressLength);
        for (auto code = codes.rbegin(); code != codes.rend(); ++code) m_device.keyUp(*code);
        return {};
    }

    Outcome run(const Step::Wait& step) {
        pause(step.seconds);
        return {};
    }

    InputDevice m_device;
    Clock::time_point m_now;
};

std::expected<std::string, std::string> readScript(const std::string& path) {
    if (path == "-") return std::string(std::istreambuf_iterator<char>(std::cin), {});
    std::ifstream file(path);
    if (!file) return std::unexpected(fmt::format("Cannot read {}.", path));
    return std::string(std::istreambuf_iterator<char>(file), {});
}

Outcome playFile(const std::string& path) {
    const auto script = readScript(path);
    if (!script) return std::unexpected(script.error());
    const auto steps = parseStory(*script);
    if (!steps) return std::unexpected(fmt::format("{}, {}.", path, steps.error()));
    auto device = InputDevice::open("");
    if (!device) return std::unexpected(device.error());
    return Player(std::move(*device)).play(*steps);
}

} // namespace
} // namespace morvelin

int main(int argc, char** argv) {
    if (argc != 2 || std::string_view(argv[1]) == "--help") {
        fmt::print(stderr, "Usage: demo-drive SCRIPT\nPlays a script of input (\"-\": standard input) on $DISPLAY.\n");
        return argc == 2 ? 0 : 2;
    }
    if (const auto done = morvelin::playFile(argv[1]); !done) {
        fmt::print(stderr, "demo-drive: {}\n", done.error());
        return 1;
    }
    return 0;
}
