// Pointer and keyboard of an X desktop, moved and pressed by XTEST. Owned by the program's composition.
#pragma once

#include <memory>

#include "core/base/EventLoop.h"
#include "platform/InputPosting.h"
#include "platform/x11/HeldInput.h"
#include "platform/x11/SpareKeycodes.h"
#include "platform/x11/X11Connection.h"
#include "platform/x11/X11Keyboard.h"

namespace morvelin {

class X11InputPosting final : public InputPosting {
public:
    /// How long keycodes stay lent when nothing more is posted. Each change of the layout keeps every program busy for
    /// a moment, window manager included: that had better not fall between two actions.
    static constexpr Seconds kLoan{10};

    /// Connects to `display`, or to the one that $DISPLAY names where it is empty. The loop must outlive this.
    static Result<std::unique_ptr<X11InputPosting>, InputPostingError> connect(const std::string& display,
                                                                               EventLoop& loop, Seconds loan = kLoan);
    ~X11InputPosting() override;

    Result<void, InputPostingError> check() override;
    std::optional<DesktopPoint> location() override;
    void moveTo(DesktopPoint place) override;
    void press(PointerButton button) override;
    void release(PointerButton button) override;
    void turnWheel(WheelDirection direction, int notches) override;
    void keyDown(Key key) override;
    void keyUp(Key key) override;
    Result<void, InputPostingError> type(char32_t character) override;
    Seconds settlingTime(char32_t character) override;
    void focus(WindowID window) override;

private:
    X11InputPosting(X11Connection connection, EventLoop& loop, Seconds loan);

    void readEvents();
    /// Sends what was posted on its way.
    void posted();
    void takeBackWhenIdle();
    void tap(const X11Keyboard::Keystroke& keystroke, const X11Keyboard::State& state);
    [[nodiscard]] std::optional<X11Keyboard::Keystroke> keystrokeNow(KeySymbol symbol,
                                                                     const X11Keyboard::State& state) const;
    [[nodiscard]] bool hasWindowManager() const;

    X11Connection m_connection;
    EventLoop& m_loop;
    Seconds m_loan;
    HostTime m_lastPost;
    HeldInput m_held;
    X11Keyboard m_keyboard;
    SpareKeycodes m_spares;
    EventLoop::Timer m_takingBack; ///< while keycodes are lent
    xcb_atom_t m_activeWindow = XCB_ATOM_NONE;
    xcb_atom_t m_windowManager = XCB_ATOM_NONE;
};

} // namespace morvelin
