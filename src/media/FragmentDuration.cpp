#include "media/FragmentDuration.h"

#include <string_view>

namespace morvelin {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kBoxHeader = 8;  // size, type
constexpr std::size_t kFullHeader = 4; // version, flags

std::uint32_t numberAt(Bytes bytes, std::size_t offset) {
    std::uint32_t number = 0;
    for (std::size_t index = 0; index < 4; ++index) number = number << 8 | bytes[offset + index];
    return number;
}

/// The last box of this type among the boxes from `begin` to `end`, header included.
std::optional<std::pair<std::size_t, std::size_t>> lastBox(Bytes bytes, std::size_t begin, std::size_t end,
                                                           std::string_view type) {
    std::optional<std::pair<std::size_t, std::size_t>> found;
    while (begin + kBoxHeader <= end) {
        const std::size_t size = numberAt(bytes, begin);
        if (size < kBoxHeader || size > end - begin) break;
        if (std::string_view(reinterpret_cast<const char*>(bytes.data()) + begin + 4, 4) == type)
            found = {begin, begin + size};
        begin += size;
    }
    return found;
}

std::uint32_t flagsOf(Bytes bytes, std::size_t box) { return numberAt(bytes, box + kBoxHeader) & 0xFFFFFF; }

/// The duration that all frames of the fragment without one of their own share.
std::optional<std::size_t> sharedDuration(Bytes bytes, std::size_t header, std::size_t end) {
    const std::uint32_t flags = flagsOf(bytes, header);
    if ((flags & 0x08) == 0) return std::nullopt;
    std::size_t offset = header + kBoxHeader + kFullHeader + 4; // track id
    if ((flags & 0x01) != 0) offset += 8;                       // base data offset
    if ((flags & 0x02) != 0) offset += 4;                       // sample description
    return offset + 4 <= end ? std::optional(offset) : std::nullopt;
}

} // namespace

std::optional<std::size_t> lastFrameDurationOffset(Bytes fragment) {
    const auto moof = lastBox(fragment, 0, fragment.size(), "moof");
    if (!moof) return std::nullopt;
    const auto traf = lastBox(fragment, moof->first + kBoxHeader, moof->second, "traf");
    if (!traf) return std::nullopt;
    const auto tfhd = lastBox(fragment, traf->first + kBoxHeader, traf->second, "tfhd");
    const auto trun = lastBox(fragment, traf->first + kBoxHeader, traf->second, "trun");
    if (!tfhd || !trun || trun->second - trun->first < kBoxHeader + kFullHeader + 4) return std::nullopt;

    const std::uint32_t flags = flagsOf(fragment, trun->first);
    const std::uint32_t count = numberAt(fragment, trun->first + kBoxHeader + kFullHeader);
    if (count == 0) return std::nullopt;
    if ((flags & 0x100) == 0) return count == 1 ? sharedDuration(fragment, tfhd->first, tfhd->second) : std::nullopt;

    // Each frame has a row of up to four numbers, its duration first; the rows end the box.
    std::size_t row = 0;
    for (const std::uint32_t field : {0x100u, 0x200u, 0x400u, 0x800u})
        if ((flags & field) != 0) row += 4;
    if (trun->second - trun->first < kBoxHeader + kFullHeader + 4 + row * count) return std::nullopt;
    return trun->second - row;
}

} // namespace morvelin
