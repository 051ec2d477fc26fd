// Frames that repeat the one before, made without an encoder. Owned by the encoder whose stream they go into.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "platform/Picture.h"

namespace morvelin {

/// A repeated frame is a slice in which every macroblock is skipped, some 20 bytes: for a frame that differs in nothing
/// from the one before, an encoder would look at each block to find out the same.
///
/// The stream's frames are numbered (`frame_num`), and each is decoded from the one before. So a repeated frame takes
/// the next number, and those that the encoder makes after it are renumbered, up to the next key frame.
///
/// For streams of one slice a frame, frame pictures, picture order by decoding order (type 2) and no frames out of
/// order: what libx264 makes without B-frames.
class RepeatedFrames {
public:
    /// From the stream's sequence parameter set, without a start code. Nothing for streams of another kind.
    static std::optional<RepeatedFrames> forStream(std::span<const std::uint8_t> sequenceParameters, PixelSize size);

    /// The picture parameter set that repeated frames go by, with a start code: goes with the stream's own.
    [[nodiscard]] static std::vector<std::uint8_t> pictureParameters();

    /// Takes a coded frame's units, as they lie in the stream without their start codes, one after the other; gives the
    /// frame as it follows on those that were repeated before it.
    void beginFrame(bool isKeyFrame);
    void appendUnit(std::span<const std::uint8_t> unit, std::vector<std::uint8_t>& frame) const;

    /// The frame before, once more.
    [[nodiscard]] std::vector<std::uint8_t> repeat();

private:
    RepeatedFrames(int numberBits, std::uint32_t blocks) : m_numberBits(numberBits), m_blocks(blocks) {}

    int m_numberBits = 0;
    std::uint32_t m_blocks = 0;
    std::uint32_t m_number = 0;   ///< of the last frame, counted from its key frame
    std::uint32_t m_repeated = 0; ///< frames since the key frame
};

} // namespace morvelin
