// The changing picture of a part of an X desktop. Only what was drawn upon is fetched. Owned by a capture.
#pragma once

#include <vector>

#include <xcb/damage.h>
#include <xcb/xfixes.h>

#include "platform/Screen.h"
#include "platform/x11/ScreenImage.h"
#include "platform/x11/SharedMemory.h"
#include "platform/x11/HostClock.h"
#include "platform/x11/X11Connection.h"

namespace morvelin {

/// A frame takes two round trips: one asks for the region drawn upon, one for all its pixels.
class X11ScreenStream final : public ScreenStream {
public:
    static Result<std::unique_ptr<ScreenStream>, ScreenError> open(X11Connection connection,
                                                                   const ScreenStreamOptions& options);

    [[nodiscard]] PixelSize size() const override { return m_image.size(); }
    Result<bool, ScreenError> next(Seconds timeout, const std::function<void(const ScreenFrame&)>& take) override;
    void interrupt() override { m_wakeUp.ring(); }

private:
    X11ScreenStream(X11Connection connection, SharedMemory memory, const ScreenStreamOptions& options,
                    const PixelBox& desktop);

    void watch();
    void readEvents();
    enum class Wait { Due, Interrupted, TimedOut };
    Wait waitForDamage(HostTime deadline);
    void schedule(HostTime frameTime);

    Result<void, ScreenError> followDesktop(std::vector<PixelBox>& changed);
    Result<std::vector<PixelBox>, ScreenError> takeDamage();
    Result<void, ScreenError> fetch(std::span<const PixelBox> boxes, std::vector<PixelBox>& changed);
    void discardReplies(std::span<const xcb_shm_get_image_cookie_t> cookies) const;

    X11Connection m_connection;
    SharedMemory m_memory;
    WakeUp m_wakeUp;
    ScreenImage m_image;
    ScreenStreamOptions m_options;
    PixelBox m_visible; ///< the part of the area that the desktop holds, relative to the area

    xcb_damage_damage_t m_damage = 0;
    xcb_xfixes_region_t m_region = 0;
    std::uint8_t m_damageEvent = 0;
    std::uint8_t m_randrEvent = 0;

    bool m_isDamaged = true;
    bool m_isWholeWanted = true;
    bool m_isFirstFrame = true;
    bool m_hasDesktopChanged = false;
    HostTime m_nextDue;
};

} // namespace morvelin
