// The changing picture of one window, also while others cover it. Owned by a capture.
#pragma once

#include <optional>
#include <string>

#include "media/ScreenScaler.h"
#include "platform/WindowFit.h"
#include "platform/x11/X11DamageStream.h"
#include "platform/x11/X11Windows.h"

namespace morvelin {

/// Composite keeps the window's pixels in a pixmap of their own; a new one each time the window is shown or changes its
/// size, which the window and those around it tell. While the window is hidden its last picture stays.
class X11WindowStream final : public X11DamageStream {
public:
    /// `WindowClosed` where there is no such window, or it doesn't show.
    static Result<std::unique_ptr<ScreenStream>, ScreenError> open(X11Connection connection,
                                                                   const ScreenStreamOptions& options);
    ~X11WindowStream() override;

private:
    /// A window that is larger than the stream's picture, and how it is made smaller.
    struct Reduction {
        ScreenImage whole;
        ScreenScaler scaler;
        std::vector<std::uint8_t> rows; ///< of the box that is taken over
    };

    X11WindowStream(X11Connection connection, SharedMemory memory, const ScreenStreamOptions& options);

    void watchWindow();
    void watchAncestors();
    Result<void, ScreenError> show(const WindowPlace& place, std::vector<PixelBox>& changed);
    Result<void, ScreenError> fit(PixelSize content, std::vector<PixelBox>& changed);
    void hide();
    [[nodiscard]] bool changesSource(std::uint8_t number, const xcb_generic_event_t& event) override;
    Result<void, ScreenError> followSource(std::vector<PixelBox>& changed) override;
    void put(const PixelBox& box, const std::uint8_t* pixels, std::vector<PixelBox>& changed) override;
    void putReduced(const PixelBox& scaled, std::vector<PixelBox>& changed);

    xcb_window_t m_window;
    X11Windows m_windows;
    std::string m_name; ///< for the sentence that tells of its end
    xcb_pixmap_t m_pixmap = 0;
    PixelSize m_content; ///< of the window's picture, even
    WindowFit m_fit;
    std::optional<Reduction> m_reduction;
};

} // namespace morvelin
