#include "agent/Gestures.h"

#include <cmath>

#include "core/base/Smoothstep.h"

namespace morvelin {

namespace {

constexpr double kStepsPerSecond = 120;
constexpr int kShortestDragSteps = 12;
constexpr Seconds kBetweenClicks{0.06};
/// At no delay the main thread is left to others once in so many characters.
constexpr std::size_t kCharactersAtOnce = 16;

int stepCount(Seconds duration) { return std::max(1, static_cast<int>(std::lround(duration.value * kStepsPerSecond))); }

/// Steps of a gesture, each at its time after the start: what holds one step up does not push back the rest.
class Steps {
public:
    Steps(EventLoop& loop, Seconds pause) : m_loop(loop), m_pause(pause), m_start(loop.now()) {}

    /// Waits for the end of the next step.
    [[nodiscard]] auto next() {
        const HostTime due = m_start + ++m_count * m_pause;
        return m_loop.sleep(std::max(due - m_loop.now(), 0_s));
    }

private:
    EventLoop& m_loop;
    Seconds m_pause;
    HostTime m_start;
    int m_count = 0;
};

/// Keeps a button down, whatever happens, no longer than it lives itself.
class PressedButton {
public:
    PressedButton(InputPosting& posting, PointerButton button) : m_posting(posting), m_button(button) {
        m_posting.press(m_button);
    }
    PressedButton(const PressedButton&) = delete;
    PressedButton& operator=(const PressedButton&) = delete;
    ~PressedButton() { m_posting.release(m_button); }

private:
    InputPosting& m_posting;
    PointerButton m_button;
};

/// Turns a distance in pixels, which comes bit by bit, into whole notches of the wheel. What is left of a notch is
/// carried on; a distance too short for a notch still turns the wheel by one.
class WheelAxis {
public:
    WheelAxis(int distance, WheelDirection forward, WheelDirection back)
        : m_distance(std::abs(distance)),
          m_notches(static_cast<int>(std::lround(m_distance / Gestures::kPixelsPerNotch))),
          m_direction(distance > 0 ? forward : back) {
        if (distance != 0) m_notches = std::max(m_notches, 1);
    }

    /// After this fraction of the whole distance.
    void turn(double fraction, InputPosting& posting) {
        const double pixels = std::round(fraction * m_distance);
        const int due = m_distance > 0 ? static_cast<int>(std::lround(m_notches * pixels / m_distance)) : 0;
        if (due > m_turned) posting.turnWheel(m_direction, due - m_turned);
        m_turned = due;
    }

private:
    double m_distance;
    int m_notches;
    WheelDirection m_direction;
    int m_turned = 0;
};

} // namespace

/// Whether events can be posted, and all that were so far have arrived.
Gestures::Played Gestures::postable() {
    if (auto checked = m_posting.check(); !checked) return failure(InputError(std::move(checked).error()));
    return {};
}

/// In a straight line from where the pointer is, with the ease in time.
Task<void> Gestures::glide(DesktopPoint target, int count, Seconds duration) {
    const DesktopPoint start = m_posting.location().value_or(target);
    Steps steps(m_loop, duration / count);
    for (int step = 1; step <= count; ++step) {
        const double eased = smoothstep(static_cast<double>(step) / count);
        m_posting.moveTo({std::lerp(start.x, target.x, eased), std::lerp(start.y, target.y, eased)});
        if (duration > 0_s) co_await steps.next();
    }
}

Task<Gestures::Played> Gestures::move(DesktopPoint target, Seconds duration) {
    const Turns::Turn turn = co_await m_turns.next();
    if (auto ready = postable(); !ready) co_return ready;
    co_await glide(target, stepCount(duration), duration);
    co_return postable();
}

Task<Gestures::Played> Gestures::click(DesktopPoint target, PointerButton button, int count) {
    const Turns::Turn turn = co_await m_turns.next();
    if (auto ready = postable(); !ready) co_return ready;
    co_await glide(target, stepCount(kApproach), kApproach);
    Steps clicks(m_loop, kBetweenClicks);
    for (int click = 1; click <= count; ++click) {
        if (click > 1) co_await clicks.next();
        const PressedButton pressed(m_posting, button);
    }
    co_return postable();
}

Task<Gestures::Played> Gestures::drag(DesktopPoint from, DesktopPoint to, PointerButton button, Seconds duration) {
    const Turns::Turn turn = co_await m_turns.next();
    if (auto ready = postable(); !ready) co_return ready;
    co_await glide(from, stepCount(kApproach), kApproach);
    const bool isShort = duration <= kShortestDrag;
    {
        const PressedButton pressed(m_posting, button);
        co_await glide(to, isShort ? kShortestDragSteps : stepCount(duration), isShort ? kShortestDrag : duration);
    }
    co_return postable();
}

Task<Gestures::Played> Gestures::scroll(std::optional<DesktopPoint> place, Distance distance, Seconds duration) {
    const Turns::Turn turn = co_await m_turns.next();
    if (auto ready = postable(); !ready) co_return ready;
    if (place) m_posting.moveTo(*place);
    const int count = stepCount(duration);
    WheelAxis vertical(distance.dy, WheelDirection::Down, WheelDirection::Up);
    WheelAxis horizontal(distance.dx, WheelDirection::Right, WheelDirection::Left);
    Steps steps(m_loop, duration / count);
    for (int step = 1; step <= count; ++step) {
        const double eased = smoothstep(static_cast<double>(step) / count);
        vertical.turn(eased, m_posting);
        horizontal.turn(eased, m_posting);
        if (duration > 0_s) co_await steps.next();
    }
    co_return postable();
}

Task<Gestures::Played> Gestures::type(std::vector<std::u32string> graphemes, Seconds delay) {
    const Turns::Turn turn = co_await m_turns.next();
    if (auto ready = postable(); !ready) co_return ready;
    Steps steps(m_loop, delay);
    std::size_t typed = 0;
    for (const std::u32string& grapheme : graphemes) {
        if (auto done = co_await typeGrapheme(grapheme); !done) co_return done;
        if (delay > 0_s || ++typed % kCharactersAtOnce == 0) co_await steps.next();
    }
    co_return postable();
}

Task<Gestures::Played> Gestures::typeGrapheme(const std::u32string& grapheme) {
    for (const char32_t character : grapheme) {
        if (character == U'\n' && grapheme.front() == U'\r') continue; // one line end
        if (const Seconds settling = m_posting.settlingTime(character); settling > 0_s) co_await m_loop.sleep(settling);
        if (auto typed = m_posting.type(character); !typed) co_return failure(InputError(std::move(typed).error()));
    }
    co_return Played();
}

Task<Gestures::Played> Gestures::press(KeyChord chord) {
    const Turns::Turn turn = co_await m_turns.next();
    if (auto ready = postable(); !ready) co_return ready;
    for (const Key modifier : chord.modifiers) m_posting.keyDown(modifier);
    m_posting.keyDown(chord.key);
    m_posting.keyUp(chord.key);
    for (auto modifier = chord.modifiers.rbegin(); modifier != chord.modifiers.rend(); ++modifier)
        m_posting.keyUp(*modifier);
    co_return postable();
}

} // namespace morvelin
