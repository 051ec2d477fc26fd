#include "core/base/Identity.h"

#include <cstring>

#include <fmt/format.h>

namespace morvelin {

namespace {

UUID versionFour(std::mt19937_64& engine) {
    const std::array<std::uint64_t, 2> words{engine(), engine()};
    UUID id;
    std::memcpy(id.bytes.data(), words.data(), id.bytes.size());
    id.bytes[6] = static_cast<std::uint8_t>((id.bytes[6] & 0x0f) | 0x40);
    id.bytes[8] = static_cast<std::uint8_t>((id.bytes[8] & 0x3f) | 0x80);
    return id;
}

constexpr bool isHyphenPlace(std::size_t place) { return place == 8 || place == 13 || place == 18 || place == 23; }

std::optional<std::uint8_t> hexDigit(char c) {
    if (c >= '0' && c <= '9') return static_cast<std::uint8_t>(c - '0');
    if (c >= 'A' && c <= 'F') return static_cast<std::uint8_t>(c - 'A' + 10);
    if (c >= 'a' && c <= 'f') return static_cast<std::uint8_t>(c - 'a' + 10);
    return std::nullopt;
}

} // namespace

std::string UUID::text() const {
    std::string out;
    out.reserve(36);
    for (const std::uint8_t byte : bytes) {
        if (isHyphenPlace(out.size())) out += '-';
        fmt::format_to(std::back_inserter(out), "{:02X}", byte);
    }
    return out;
}

std::optional<UUID> UUID::parse(std::string_view text) {
    if (text.size() != 36) return std::nullopt;
    UUID id;
    std::size_t nibble = 0;
    for (std::size_t place = 0; place < text.size(); ++place) {
        if (isHyphenPlace(place)) {
            if (text[place] != '-') return std::nullopt;
            continue;
        }
        const auto digit = hexDigit(text[place]);
        if (!digit) return std::nullopt;
        std::uint8_t& byte = id.bytes[nibble / 2];
        byte = static_cast<std::uint8_t>((byte << 4) | *digit);
        ++nibble;
    }
    return id;
}

RandomIdSource::RandomIdSource() {
    std::random_device device;
    std::seed_seq seed{device(), device(), device(), device(), device(), device(), device(), device()};
    m_engine.seed(seed);
}

UUID RandomIdSource::next() { return versionFour(m_engine); }

UUID SeededIdSource::next() { return versionFour(m_engine); }

} // namespace morvelin

std::size_t std::hash<morvelin::UUID>::operator()(const morvelin::UUID& id) const noexcept {
    std::uint64_t words[2];
    std::memcpy(words, id.bytes.data(), sizeof words);
    return static_cast<std::size_t>(words[0] ^ (words[1] * 0x9e3779b97f4a7c15ULL));
}
