// Writes a GIF that moves: pictures in, a file out. Owned by an export.
#pragma once

#include <cstdint>
#include <filesystem>
#include <future>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "core/base/Result.h"
#include "media/GIFDithering.h"
#include "media/GIFFile.h"
#include "media/PaletteGenerator.h"
#include "platform/Picture.h"

namespace morvelin {

/// Colours are chosen for a stretch of frames at a time, so that memory stays flat, and kept for the next stretch where
/// they serve it too. One stretch is drawn and packed on a thread of the writer's while the next one comes in.
/// One thread at a time. Operations give the system's error number when they fail; an error may come late.
class GIFWriter {
public:
    static Result<std::unique_ptr<GIFWriter>, int> create(const std::filesystem::path& path, PixelSize size,
                                                          double frameRate);

    /// Adds a frame in 4:4:4. `changed` lists the boxes in which it may differ from the one before.
    Result<void, int> append(const Picture& picture, std::span<const PixelBox> changed);
    /// Completes the file, which is on disk when it returns. There is a frame.
    Result<void, int> finish();

private:
    /// Frames that are drawn in one go.
    struct Stretch {
        std::vector<FrameChange> frames;
        PaletteGenerator colors; ///< of the changed pixels
        std::size_t bytes = 0;
    };

    GIFWriter(GIFFile file, PixelSize size, double frameRate);

    /// What the picture changes; from now on it is the frame before.
    FrameChange take(const Picture& picture, std::span<const PixelBox> changed);
    /// The smallest box around the pixels that differ.
    [[nodiscard]] PixelBox differingBox(std::span<const PixelBox> changed) const;
    [[nodiscard]] std::span<PixelColor> row(std::vector<PixelColor>& picture, const PixelBox& box, int y) const;
    Result<void, int> hand(Stretch stretch);
    /// The outcome of the stretch under way.
    Result<void, int> awaited();

    // On the writer's thread.
    Result<void, int> draw(Stretch stretch);
    Result<void, int> choosePalette(Stretch& stretch);
    /// In hundredths of a second.
    [[nodiscard]] int delay(std::int64_t frame) const;

    PixelSize m_size;
    double m_frameRate;
    std::vector<PixelColor> m_before;
    std::vector<PixelColor> m_picture; ///< as `m_before`, but for what a frame changes while it is taken
    bool m_isFirst = true;
    Stretch m_stretch;
    std::int64_t m_pixelsSeen = 0;

    GIFFile m_file;
    GIFDithering m_dithering;
    std::optional<NearestColor> m_nearest;
    std::int64_t m_drawnFrames = 0;
    std::future<Result<void, int>> m_drawing; ///< last: it ends before what it uses
};

} // namespace morvelin
