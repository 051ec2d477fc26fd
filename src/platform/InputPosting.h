// The named operation "posting input": pointer and keyboard events that programs cannot tell from a person's.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "core/base/Result.h"
#include "core/base/Time.h"
#include "platform/Pointer.h"
#include "platform/Screen.h"

namespace morvelin {

/// Why events can't be posted.
struct InputPostingError {
    enum class Kind {
        NotTrusted, ///< the user has not allowed this program to control the desktop
        Refused,    ///< the system drops the events although the user has
        Failed,     ///< an event could not be made
        Unavailable ///< the desktop offers no way; `detail` is a whole sentence that tells a user what to do
    };

    Kind kind = Kind::Unavailable;
    std::string detail;
};

enum class PointerButton : std::uint8_t { Left, Right, Middle };
enum class WheelDirection : std::uint8_t { Up, Down, Left, Right };

/// A key, by its place on a keyboard of US layout: what it types is up to the user's layout.
// clang-format off
enum class Key : std::uint8_t {
    A, B, C, D, E, F, G, H, I, J, K, L, M, N, O, P, Q, R, S, T, U, V, W, X, Y, Z,
    Digit0, Digit1, Digit2, Digit3, Digit4, Digit5, Digit6, Digit7, Digit8, Digit9,
    Equal, Minus, LeftBracket, RightBracket, Quote, Semicolon, Backslash, Comma, Slash, Period, Grave,
    Return, Tab, Space, Backspace, ForwardDelete, Escape,
    Left, Right, Up, Down, Home, End, PageUp, PageDown,
    F1, F2, F3, F4, F5, F6, F7, F8, F9, F10, F11, F12,
    Control, Shift, Alt, Super
};
// clang-format on
inline constexpr std::size_t kKeyCount = static_cast<std::size_t>(Key::Super) + 1;

/// The desktop's pointer and keyboard, held by us. All on the main thread. Nothing here waits, and an event for a desktop
/// that has gone is dropped: `check` tells.
class InputPosting {
public:
    /// Lets go of everything that is held, and leaves the keyboard's layout as it was.
    virtual ~InputPosting() = default;

    /// Returns when the desktop has taken what was posted so far, or why it takes nothing.
    [[nodiscard]] virtual Result<void, InputPostingError> check() = 0;

    /// Where the pointer is; nothing when the desktop can't be asked.
    [[nodiscard]] virtual std::optional<DesktopPoint> location() = 0;
    virtual void moveTo(DesktopPoint place) = 0;
    virtual void press(PointerButton button) = 0;
    virtual void release(PointerButton button) = 0;
    virtual void turnWheel(WheelDirection direction, int notches) = 0;

    virtual void keyDown(Key key) = 0;
    virtual void keyUp(Key key) = 0;

    /// Types one character whatever the layout; a line end is the Return key. Not before `settlingTime` of it has passed.
    [[nodiscard]] virtual Result<void, InputPostingError> type(char32_t character) = 0;
    /// How long programs still need for what was typed before, until this character can be typed safely.
    [[nodiscard]] virtual Seconds settlingTime(char32_t character) = 0;

    /// Brings a window to the front and gives it the keyboard.
    virtual void focus(WindowID window) = 0;
};

} // namespace morvelin
