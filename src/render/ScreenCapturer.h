// Stills of the live screen, with the pointer in them: what an agent looks at before it acts. Holds no state.
#pragma once

#include <cstdint>
#include <vector>

#include "capture/PointerSpace.h"
#include "core/base/EventLoop.h"
#include "core/base/Result.h"
#include "platform/Screen.h"
#include "render/ScreenCaptureError.h"

namespace morvelin {

class ScreenCapturer {
public:
    struct Shot {
        std::vector<std::uint8_t> pngData;
        PixelSize size;
        PointerSpace space; ///< what 0–1 positions in the image span
    };

    ScreenCapturer(EventLoop& loop, ScreenSource& screen, PointerSource& pointer)
        : m_loop(loop),
          m_screen(screen),
          m_pointer(pointer) {}

    /// The space as it shows now, pixel for pixel. On the main thread; the work is a worker's.
    Task<Result<Shot, ScreenCaptureError>> capture(PointerSpace space);

private:
    EventLoop& m_loop;
    ScreenSource& m_screen;
    PointerSource& m_pointer;
};

} // namespace morvelin
