// A camera's frames, however its driver lays them out, as pictures of the system's one form. Owned by a camera's stream.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "media/FFmpegHandles.h"
#include "media/FrameConversion.h"
#include "platform/Picture.h"

namespace morvelin {

enum class CameraPixels {
    YUYV,
    UYVY,
    NV12,
    I420,
    RGB, ///< 3 bytes
    BGR,
    RGBX, ///< 4 bytes, the last one unused
    BGRX,
    MotionJPEG
};

/// A frame as it lies in memory.
struct CameraBytes {
    std::span<const std::uint8_t> bytes;
    CameraPixels pixels = CameraPixels::YUYV;
    PixelSize size;
    std::ptrdiff_t stride = 0; ///< bytes from one row of the first plane to the next; 0: rows lie close together
};

class CameraPictures {
public:
    CameraPictures() { keepFFmpegQuiet(); }

    /// Nothing for a frame that is cut short or damaged, as cameras give now and then. The picture may look into the
    /// bytes themselves.
    [[nodiscard]] std::shared_ptr<const Picture> picture(const CameraBytes& frame);

private:
    [[nodiscard]] FrameHandle decoded(std::span<const std::uint8_t> jpeg);

    CodecHandle m_decoder;
    FrameConverter m_converter;
};

} // namespace morvelin
