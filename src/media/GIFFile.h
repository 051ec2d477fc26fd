// A GIF's file while it is written: header, images with their delays, end. Owned by its writer.
#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

#include "core/base/Result.h"
#include "media/ColorPalette.h"
#include "media/OutputFile.h"
#include "platform/Picture.h"

namespace morvelin {

/// What one image puts over those before it; where it has colour 0, they stay.
struct GIFImage {
    PixelBox box;
    PlaneView<const std::uint8_t> numbers; ///< of colours, in the box's size
};

/// Operations give the system's error number when they fail.
class GIFFile {
public:
    static Result<GIFFile, int> create(const std::filesystem::path& path, PixelSize size);

    /// Images that follow are in these colours. The first ones are the file's own; each image in others carries them.
    void setPalette(const ColorPalette& palette);
    /// `delay` is in hundredths of a second. A palette has been set.
    Result<void, int> append(const GIFImage& image, int delay);
    /// The whole file is on disk afterwards.
    Result<void, int> finish();

private:
    GIFFile(OutputFile file, PixelSize size) : m_file(std::move(file)), m_size(size) {}

    void put16(int value);
    void putColors(const ColorPalette& palette);
    void putHeader();
    Result<void, int> flush();

    OutputFile m_file;
    PixelSize m_size;
    bool m_hasHeader = false;
    ColorPalette m_filePalette;
    ColorPalette m_palette;
    std::vector<std::uint8_t> m_bytes; ///< not yet written
};

} // namespace morvelin
