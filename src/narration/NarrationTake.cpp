#include "narration/NarrationTake.h"

#include <algorithm>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "core/base/Checksum.h"

namespace morvelin {

namespace {

constexpr Seconds kPause = 0.4_s;
constexpr Seconds kTolerance = 1e-9_s;
constexpr std::size_t kFingerprintBytes = 8;

/// The take's id with the piece's number in its last two bytes.
UUID pieceID(UUID take, std::size_t index) {
    take.bytes[14] ^= static_cast<std::uint8_t>(index >> 8);
    take.bytes[15] ^= static_cast<std::uint8_t>(index);
    return take;
}

/// The take's times at which it may be cut: in the middle of each long pause.
std::vector<Seconds> cutPoints(std::vector<TranscriptWord> words, Seconds duration) {
    std::ranges::stable_sort(words, {}, &TranscriptWord::t);
    std::vector<Seconds> points;
    for (std::size_t i = 1; i < words.size(); ++i) {
        const SourceTime before = words[i - 1].endT;
        const SourceTime after = words[i].t;
        const Seconds middle{0.5 * (before.value + after.value)};
        if (after - before >= kPause - kTolerance && middle > 0_s && middle < duration) points.push_back(middle);
    }
    std::ranges::sort(points); // words that overlap can give them in another order
    return points;
}

} // namespace

std::filesystem::path NarrationTake::fileURL(const std::filesystem::path& bundle) const {
    if (isLegacy()) return bundle / kLegacyNarrationFile;
    return bundle / kNarrationFolder / (id().text() + ".m4a");
}

std::vector<NarrationPiece> NarrationTake::pieces() const {
    std::vector<NarrationPiece> division;
    if (storedPieces) {
        division = *storedPieces;
    } else {
        std::vector<Seconds> edges = cutPoints(words.value_or(std::vector<TranscriptWord>()), duration);
        edges.insert(edges.begin(), 0_s);
        edges.push_back(duration);
        for (std::size_t i = 1; i < edges.size(); ++i)
            division.push_back({{}, edges[i - 1], edges[i], timelineStart + edges[i - 1]});
    }
    for (std::size_t i = 0; i < division.size(); ++i) division[i].id = pieceID(id(), i);
    return division;
}

EditTime NarrationTake::start() const {
    const auto division = playedPieces();
    if (division.empty()) return timelineStart;
    return std::ranges::min(division, {}, &NarrationPiece::timelineStart).timelineStart;
}

EditTime NarrationTake::end() const {
    const auto division = playedPieces();
    if (division.empty()) return timelineStart + duration;
    EditTime last = division.front().timelineStart;
    for (const NarrationPiece& piece : division)
        last = std::max(last, piece.timelineStart + std::max(piece.takeEnd - piece.takeStart, 0_s));
    return last;
}

std::string NarrationTake::fingerprintOf(std::span<const VideoFragment> fragments) {
    std::string text;
    for (const VideoFragment& fragment : fragments) {
        if (!text.empty()) text += '|';
        text += fmt::format("{:.3f}-{:.3f}@{:.3f}", fragment.sourceStart.value, fragment.sourceEnd.value,
                            fragment.speed);
    }
    const SHA256Digest digest = sha256(text);
    return fmt::format("{:02x}", fmt::join(std::span(digest).first(kFingerprintBytes), ""));
}

bool NarrationTake::isOutdatedFor(std::span<const VideoFragment> fragments) const {
    return editFingerprint && *editFingerprint != fingerprintOf(fragments);
}

} // namespace morvelin
