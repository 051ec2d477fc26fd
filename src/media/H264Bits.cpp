#include "media/H264Bits.h"

#include <bit>

namespace morvelin::h264 {

std::uint32_t BitReader::bits(int count) {
    std::uint32_t value = 0;
    for (; count > 0; --count, ++m_position) {
        const std::size_t byte = m_position / 8;
        const std::uint32_t bit = byte < m_bytes.size() ? (m_bytes[byte] >> (7 - m_position % 8)) & 1U : 0U;
        value = value << 1 | bit;
    }
    return value;
}

std::uint32_t BitReader::unsignedGolomb() {
    int zeros = 0;
    while (zeros < 32 && !isBehindEnd() && bits(1) == 0) ++zeros;
    if (zeros >= 32) return UINT32_MAX;
    return (1U << zeros) - 1 + bits(zeros);
}

BitWriter& BitWriter::bits(std::uint32_t value, int count) {
    for (; count > 0; --count) {
        if (m_free == 0) {
            m_bytes.push_back(0);
            m_free = 8;
        }
        --m_free;
        m_bytes.back() |= static_cast<std::uint8_t>(((value >> (count - 1)) & 1U) << m_free);
    }
    return *this;
}

BitWriter& BitWriter::unsignedGolomb(std::uint32_t value) {
    const int length = std::bit_width(value + 1);
    bits(0, length - 1);
    return bits(value + 1, length);
}

std::vector<std::uint8_t> BitWriter::ended() && {
    bits(1, 1);
    return std::move(m_bytes);
}

void setBits(std::span<std::uint8_t> bytes, std::size_t position, int count, std::uint32_t value) {
    for (; count > 0; --count, ++position) {
        std::uint8_t& byte = bytes[position / 8];
        const auto mask = static_cast<std::uint8_t>(0x80U >> (position % 8));
        const bool isSet = ((value >> (count - 1)) & 1U) != 0;
        byte = static_cast<std::uint8_t>(isSet ? byte | mask : byte & ~mask);
    }
}

std::vector<std::uint8_t> unescaped(std::span<const std::uint8_t> unit) {
    std::vector<std::uint8_t> bytes;
    bytes.reserve(unit.size());
    int zeros = 0;
    for (const std::uint8_t byte : unit) {
        if (zeros >= 2 && byte == 3) {
            zeros = 0;
            continue;
        }
        bytes.push_back(byte);
        zeros = byte == 0 ? zeros + 1 : 0;
    }
    return bytes;
}

void appendUnit(std::vector<std::uint8_t>& stream, std::span<const std::uint8_t> unescapedUnit) {
    stream.insert(stream.end(), {0, 0, 0, 1});
    int zeros = 0;
    for (const std::uint8_t byte : unescapedUnit) {
        if (zeros >= 2 && byte <= 3) {
            stream.push_back(3);
            zeros = 0;
        }
        stream.push_back(byte);
        zeros = byte == 0 ? zeros + 1 : 0;
    }
}

} // namespace morvelin::h264
