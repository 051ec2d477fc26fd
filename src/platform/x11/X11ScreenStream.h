// The changing picture of a part of an X desktop. Owned by a capture.
#pragma once

#include "platform/x11/X11DamageStream.h"

namespace morvelin {

class X11ScreenStream final : public X11DamageStream {
public:
    static Result<std::unique_ptr<ScreenStream>, ScreenError> open(X11Connection connection,
                                                                   const ScreenStreamOptions& options);

private:
    X11ScreenStream(X11Connection connection, SharedMemory memory, const ScreenStreamOptions& options);

    void watchDesktop();
    void show(const PixelBox& desktop);
    [[nodiscard]] bool changesSource(std::uint8_t number, const xcb_generic_event_t& event) override;
    Result<void, ScreenError> followSource(std::vector<PixelBox>& changed) override;
    void put(const PixelBox& box, const std::uint8_t* pixels, std::vector<PixelBox>& changed) override;

    PixelBox m_area; ///< in desktop pixels
    std::string m_displayID;
    PixelBox m_visible; ///< the part of the area that the desktop holds, relative to the area
    std::uint8_t m_randrEvent = 0;
};

} // namespace morvelin
