#include "media/RepeatedFrames.h"

#include "media/H264Bits.h"
#include "media/UnchangedBlocks.h"

namespace morvelin {

using h264::BitReader;
using h264::BitWriter;

namespace {

constexpr std::uint8_t kUnitKind = 0x1F;
constexpr std::uint8_t kSlice = 1;
constexpr std::uint8_t kSliceHeader = 0x41;             // a slice that later frames refer to
constexpr std::uint8_t kPictureParametersHeader = 0x68; // likewise
constexpr std::uint32_t kPictureParametersID = 1;       // the encoder's own set has 0
constexpr std::uint32_t kHighProfile = 100;
constexpr std::uint32_t kOrderOfDecoding = 2;
constexpr std::uint32_t kOnlyPredictedSlices = 5;
constexpr std::uint32_t kNoDeblocking = 1;

std::vector<std::uint8_t> withHeader(std::uint8_t header, std::vector<std::uint8_t> payload) {
    payload.insert(payload.begin(), header);
    return payload;
}

/// The number of bits of a frame's number, from a sequence parameter set (7.3.2.1.1). Nothing for other streams than ours.
std::optional<int> numberBitsOf(std::span<const std::uint8_t> sequenceParameters) {
    const std::vector<std::uint8_t> unit = h264::unescaped(sequenceParameters);
    if (unit.size() < 5) return std::nullopt;
    BitReader reader{std::span(unit).subspan(1)};
    if (reader.bits(8) != kHighProfile) return std::nullopt;
    reader.bits(8 + 8);                           // constraints and level
    reader.unsignedGolomb();                      // its id
    reader.unsignedGolomb();                      // chroma format
    reader.unsignedGolomb();                      // depth of luma
    reader.unsignedGolomb();                      // depth of chroma
    reader.bits(1);                               // lossless transform
    if (reader.bits(1) != 0) return std::nullopt; // scaling lists
    const std::uint32_t numberBits = reader.unsignedGolomb() + 4;
    const bool isOurs = reader.unsignedGolomb() == kOrderOfDecoding && numberBits <= 16 && !reader.isBehindEnd();
    return isOurs ? std::optional(static_cast<int>(numberBits)) : std::nullopt;
}

} // namespace

std::optional<RepeatedFrames> RepeatedFrames::forStream(std::span<const std::uint8_t> sequenceParameters,
                                                        PixelSize size) {
    const auto numberBits = numberBitsOf(sequenceParameters);
    if (!numberBits) return std::nullopt;
    const PixelSize blocks = sizeInBlocks(size);
    return RepeatedFrames(*numberBits, static_cast<std::uint32_t>(blocks.width * blocks.height));
}

/// 7.3.2.2; variable-length coding, in which a whole skipped frame is one number.
std::vector<std::uint8_t> RepeatedFrames::pictureParameters() {
    BitWriter writer;
    writer.unsignedGolomb(kPictureParametersID).unsignedGolomb(0); // of sequence parameter set 0
    writer.bits(0, 1).bits(0, 1);                                  // variable-length codes; no order of fields
    writer.unsignedGolomb(0);                                      // one slice group
    writer.unsignedGolomb(0).unsignedGolomb(0);                    // one reference in each list
    writer.bits(0, 1).bits(0, 2);                                  // no weights
    writer.unsignedGolomb(0).unsignedGolomb(0).unsignedGolomb(0);  // quantisers and chroma's offset at their defaults
    writer.bits(1, 1).bits(0, 1).bits(0, 1);                       // slices choose their deblocking
    std::vector<std::uint8_t> set;
    h264::appendUnit(set, withHeader(kPictureParametersHeader, std::move(writer).ended()));
    return set;
}

void RepeatedFrames::beginFrame(bool isKeyFrame) {
    if (isKeyFrame) {
        m_number = 0;
        m_repeated = 0;
    } else {
        ++m_number;
    }
}

void RepeatedFrames::appendUnit(std::span<const std::uint8_t> unit, std::vector<std::uint8_t>& frame) const {
    const bool isRenumbered = m_repeated > 0 && !unit.empty() && (unit[0] & kUnitKind) == kSlice;
    if (!isRenumbered) {
        frame.insert(frame.end(), {0, 0, 0, 1});
        frame.insert(frame.end(), unit.begin(), unit.end());
        return;
    }
    std::vector<std::uint8_t> bytes = h264::unescaped(unit);
    const std::span<std::uint8_t> payload = std::span(bytes).subspan(1);
    BitReader reader(payload);
    reader.unsignedGolomb(); // first macroblock
    reader.unsignedGolomb(); // kind of slice
    reader.unsignedGolomb(); // picture parameter set
    h264::setBits(payload, reader.position(), m_numberBits, m_number);
    h264::appendUnit(frame, bytes);
}

/// 7.3.3 and 7.3.4. Each skipped macroblock is predicted to move as its neighbours do: not at all.
std::vector<std::uint8_t> RepeatedFrames::repeat() {
    ++m_number;
    ++m_repeated;
    BitWriter writer;
    writer.unsignedGolomb(0).unsignedGolomb(kOnlyPredictedSlices).unsignedGolomb(kPictureParametersID);
    writer.bits(m_number & ((1U << m_numberBits) - 1), m_numberBits);
    writer.bits(0, 1).bits(0, 1).bits(0, 1); // references as they are: their number, their order, their marking
    writer.unsignedGolomb(0);                // quantiser
    writer.unsignedGolomb(kNoDeblocking);
    writer.unsignedGolomb(m_blocks); // all of them skipped
    std::vector<std::uint8_t> frame;
    h264::appendUnit(frame, withHeader(kSliceHeader, std::move(writer).ended()));
    return frame;
}

} // namespace morvelin
