#include "media/MovieBoxes.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace morvelin {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kBoxHeader = 8;  // size, type
constexpr std::size_t kFullHeader = 4; // version, flags

/// Where a box begins and ends, header included.
struct Box {
    std::size_t begin = 0;
    std::size_t end = 0;

    [[nodiscard]] std::size_t content() const { return begin + kBoxHeader; }
};

std::uint32_t numberAt(Bytes bytes, std::size_t offset) {
    std::uint32_t number = 0;
    for (std::size_t index = 0; index < 4; ++index) number = number << 8 | bytes[offset + index];
    return number;
}

void putNumber(std::span<std::uint8_t> bytes, std::size_t offset, std::uint32_t number) {
    for (std::size_t index = 4; index-- > 0; number >>= 8) bytes[offset + index] = static_cast<std::uint8_t>(number);
}

/// The boxes of one type that lie side by side within the box.
std::vector<Box> boxesIn(Bytes bytes, Box parent, std::string_view type) {
    std::vector<Box> found;
    for (std::size_t begin = parent.begin; begin + kBoxHeader <= parent.end;) {
        const std::size_t size = numberAt(bytes, begin);
        if (size < kBoxHeader || size > parent.end - begin) break;
        if (std::string_view(reinterpret_cast<const char*>(bytes.data()) + begin + 4, 4) == type)
            found.push_back({begin, begin + size});
        begin += size;
    }
    return found;
}

std::optional<Box> firstBox(Bytes bytes, std::optional<Box> parent, std::string_view type) {
    if (!parent) return std::nullopt;
    const auto found = boxesIn(bytes, {parent->content(), parent->end}, type);
    return found.empty() ? std::nullopt : std::optional(found.front());
}

std::uint32_t flagsOf(Bytes bytes, Box box) { return numberAt(bytes, box.content()) & 0xFFFFFF; }

/// What a fragment says of one track's samples: shared by all, and in a row for each.
struct TrackRun {
    Box header; ///< tfhd
    Box time;   ///< tfdt
    Box run;    ///< trun
    std::size_t rows = 0;
    std::size_t rowLength = 0;
    std::uint32_t count = 0;

    [[nodiscard]] bool rowsBeginWithDuration(Bytes bytes) const { return (flagsOf(bytes, run) & 0x100) != 0; }
};

std::optional<TrackRun> readRun(Bytes bytes, Box track) {
    const auto header = firstBox(bytes, track, "tfhd");
    const auto time = firstBox(bytes, track, "tfdt");
    const auto run = firstBox(bytes, track, "trun");
    if (!header || !time || !run || run->end - run->begin < kBoxHeader + kFullHeader + 4) return std::nullopt;
    TrackRun read{*header, *time, *run, run->content() + kFullHeader + 4, 0, 0};
    read.count = numberAt(bytes, run->content() + kFullHeader);
    const std::uint32_t flags = flagsOf(bytes, *run);
    for (const std::uint32_t shared : {0x01u, 0x04u}) // data offset, first sample's flags
        if ((flags & shared) != 0) read.rows += 4;
    for (const std::uint32_t field : {0x100u, 0x200u, 0x400u, 0x800u})
        if ((flags & field) != 0) read.rowLength += 4;
    if (read.rows + read.rowLength * read.count > run->end) return std::nullopt;
    return read;
}

std::optional<TrackRun> runOf(Bytes fragment, std::uint32_t track) {
    const auto moof = boxesIn(fragment, {0, fragment.size()}, "moof");
    if (moof.empty()) return std::nullopt;
    for (const Box& traf : boxesIn(fragment, {moof.front().content(), moof.front().end}, "traf")) {
        const auto header = firstBox(fragment, traf, "tfhd");
        if (header && numberAt(fragment, header->content() + kFullHeader) == track) return readRun(fragment, traf);
    }
    return std::nullopt;
}

/// The duration that all frames of the fragment without one of their own share.
std::optional<std::size_t> sharedDuration(Bytes bytes, Box header) {
    const std::uint32_t flags = flagsOf(bytes, header);
    if ((flags & 0x08) == 0) return std::nullopt;
    std::size_t offset = header.content() + kFullHeader + 4; // track id
    if ((flags & 0x01) != 0) offset += 8;                    // base data offset
    if ((flags & 0x02) != 0) offset += 4;                    // sample description
    return offset + 4 <= header.end ? std::optional(offset) : std::nullopt;
}

/// An edit list of one entry: all that comes after the priming, at its own speed.
std::vector<std::uint8_t> editList(std::uint32_t priming) {
    std::vector<std::uint8_t> bytes(36);
    const auto putType = [&](std::size_t offset, std::string_view type) {
        std::ranges::copy(type, bytes.begin() + static_cast<std::ptrdiff_t>(offset));
    };
    putNumber(bytes, 0, 36);
    putType(4, "edts");
    putNumber(bytes, 8, 28);
    putType(12, "elst");
    putNumber(bytes, 20, 1); // entries; then the length, which fragments leave open
    putNumber(bytes, 28, priming);
    putNumber(bytes, 32, 0x10000); // speed 1
    return bytes;
}

} // namespace

std::optional<std::size_t> lastFrameDurationOffset(Bytes fragment, std::uint32_t track) {
    const auto run = runOf(fragment, track);
    if (!run || run->count == 0) return std::nullopt;
    if (!run->rowsBeginWithDuration(fragment))
        return run->count == 1 ? sharedDuration(fragment, run->header) : std::nullopt;
    return run->rows + run->rowLength * (run->count - 1);
}

bool cutTrack(std::span<std::uint8_t> fragment, std::uint32_t track, std::uint64_t end) {
    const auto run = runOf(fragment, track);
    if (!run) return false;
    const std::size_t times = run->time.content() + kFullHeader;
    std::uint64_t time = std::uint64_t{numberAt(fragment, times)} << 32 | numberAt(fragment, times + 4);
    const auto shared = sharedDuration(fragment, run->header);
    std::uint32_t kept = 0;
    for (; kept < run->count && time < end; ++kept) {
        const bool hasOwn = run->rowsBeginWithDuration(fragment);
        if (!hasOwn && !shared) return false;
        time += numberAt(fragment, hasOwn ? run->rows + run->rowLength * kept : *shared);
    }
    if (kept == run->count) return false;
    putNumber(fragment, run->run.content() + kFullHeader, kept);
    return true;
}

std::vector<std::uint8_t> withPriming(Bytes header, std::uint32_t track, std::uint32_t priming) {
    std::vector<std::uint8_t> bytes(header.begin(), header.end());
    const auto movie = boxesIn(header, {0, header.size()}, "moov");
    if (movie.empty()) return bytes;
    for (const Box& trak : boxesIn(header, {movie.front().content(), movie.front().end}, "trak")) {
        const auto tkhd = firstBox(header, trak, "tkhd");
        if (!tkhd) continue;
        const bool hasLongTimes = header[tkhd->content()] == 1;
        if (numberAt(header, tkhd->content() + kFullHeader + (hasLongTimes ? 16 : 8)) != track) continue;
        const std::vector<std::uint8_t> list = editList(priming);
        bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(tkhd->end), list.begin(), list.end());
        for (const Box& grown : {movie.front(), trak})
            putNumber(bytes, grown.begin, static_cast<std::uint32_t>(grown.end - grown.begin + list.size()));
    }
    return bytes;
}

} // namespace morvelin
