// Bits of H.264's headers: fixed-length and Exp-Golomb codes, and the bytes that keep start codes unique (ITU-T H.264,
// 7.3.1, 9.1). Used where a stream's headers are read or made.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace morvelin::h264 {

/// Reads a payload's bits from its beginning; behind the end come zeros.
class BitReader {
public:
    explicit BitReader(std::span<const std::uint8_t> bytes) : m_bytes(bytes) {}

    std::uint32_t bits(int count);
    std::uint32_t unsignedGolomb();
    /// Of the next bit, from the payload's beginning.
    [[nodiscard]] std::size_t position() const { return m_position; }
    [[nodiscard]] bool isBehindEnd() const { return m_position > 8 * m_bytes.size(); }

private:
    std::span<const std::uint8_t> m_bytes;
    std::size_t m_position = 0;
};

class BitWriter {
public:
    BitWriter& bits(std::uint32_t value, int count);
    BitWriter& unsignedGolomb(std::uint32_t value);
    /// The payload, ended as a unit of the stream ends.
    [[nodiscard]] std::vector<std::uint8_t> ended() &&;

private:
    std::vector<std::uint8_t> m_bytes;
    int m_free = 0; ///< bits of the last byte
};

/// Replaces `count` bits from `position` on.
void setBits(std::span<std::uint8_t> bytes, std::size_t position, int count, std::uint32_t value);

/// A unit without start code, as it lies in the stream → its header byte and payload.
[[nodiscard]] std::vector<std::uint8_t> unescaped(std::span<const std::uint8_t> unit);
/// The other way round, with a start code in front, appended to `stream`.
void appendUnit(std::vector<std::uint8_t>& stream, std::span<const std::uint8_t> unescapedUnit);

} // namespace morvelin::h264
