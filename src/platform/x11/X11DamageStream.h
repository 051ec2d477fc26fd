// What all streams of an X server's pictures share: they wait for damage, keep an even beat and fetch only what was drawn
// upon. Owned by a capture.
#pragma once

#include <vector>

#include <xcb/damage.h>
#include <xcb/xfixes.h>

#include "platform/Screen.h"
#include "platform/x11/HostClock.h"
#include "platform/x11/ScreenImage.h"
#include "platform/x11/SharedMemory.h"
#include "platform/x11/X11Connection.h"

namespace morvelin {

/// A frame takes two round trips: one asks for the region drawn upon, one for all its pixels.
class X11DamageStream : public ScreenStream {
public:
    [[nodiscard]] PixelSize size() const override { return m_image.size(); }
    Result<bool, ScreenError> next(Seconds timeout, const std::function<void(const ScreenFrame&)>& take) override;
    void pace(Seconds minimumFrameInterval) override { m_interval = minimumFrameInterval; }
    void interrupt() override { m_wakeUp.ring(); }
    void cut() override;

protected:
    /// Where pixels are fetched from.
    struct Source {
        xcb_drawable_t drawable = 0;
        int x = 0; ///< of the picture's corner in the drawable
        int y = 0;
        int damageX = 0; ///< of the picture's corner as damage is reported
        int damageY = 0;
        PixelBox visible; ///< what can be fetched, relative to the picture's corner; empty: nothing now
    };

    X11DamageStream(X11Connection connection, SharedMemory memory, PixelSize size, Seconds minimumFrameInterval);
    /// The extensions that every stream needs, and pixels as we expect them.
    static Result<void, ScreenError> requireExtensions(const X11Connection& connection);
    static std::size_t bytesOf(const PixelBox& box);
    /// Begins to be told of what is drawn upon `drawable`.
    void watch(xcb_drawable_t drawable);

    [[nodiscard]] const X11Connection& connection() const { return m_connection; }
    [[nodiscard]] ScreenImage& image() { return m_image; }
    /// From here pixels come from now on, all of them at first.
    void setSource(const Source& source);
    void setMemory(SharedMemory memory) { m_memory = std::move(memory); }
    [[nodiscard]] std::size_t memorySize() const { return m_memory.size(); }
    /// No frame comes before.
    void waitUntil(HostTime earliest) { m_nextDue = earliest; }

    /// Whether an event tells that the source must be looked at again.
    [[nodiscard]] virtual bool changesSource(std::uint8_t number, const xcb_generic_event_t& event) = 0;
    /// Looks at the source again; may alter the image.
    virtual Result<void, ScreenError> followSource(std::vector<PixelBox>& changed) = 0;
    /// Takes over the pixels of `box`, relative to the picture's corner, into the image.
    virtual void put(const PixelBox& box, const std::uint8_t* pixels, std::vector<PixelBox>& changed) = 0;

private:
    enum class Wait { Due, Interrupted, TimedOut };
    Wait waitForDamage(HostTime deadline);
    void readEvents();
    void schedule(HostTime frameTime);
    Result<std::vector<PixelBox>, ScreenError> takeDamage();
    Result<void, ScreenError> fetch(std::span<const PixelBox> boxes, std::vector<PixelBox>& changed);
    void discardReplies(std::span<const xcb_shm_get_image_cookie_t> cookies) const;

    X11Connection m_connection;
    SharedMemory m_memory;
    WakeUp m_wakeUp;
    ScreenImage m_image;
    Seconds m_interval;
    Source m_source;

    xcb_damage_damage_t m_damage = 0;
    xcb_xfixes_region_t m_region = 0;
    std::uint8_t m_damageEvent = 0;

    bool m_isDamaged = true;
    bool m_isWholeWanted = true;
    bool m_isFirstFrame = true;
    bool m_hasSourceChanged = false;
    HostTime m_nextDue;
};

} // namespace morvelin
