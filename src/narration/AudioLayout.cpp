#include "narration/AudioLayout.h"

#include <cmath>

#include "narration/PieceCanvas.h"
#include "timeline/FragmentMap.h"
#include "timeline/Tolerance.h"

namespace morvelin::AudioLayout {

namespace {

constexpr Seconds kShortestSound = 0.02_s;
constexpr double kSourceJoin = 1e-4; ///< seconds of the file that two joined pieces may be apart

std::optional<Piece> cutTo(const Piece& piece, EditTime from, EditTime to) {
    const EditTime start = std::max(piece.timelineStart, from);
    const EditTime end = std::min(piece.timelineEnd, to);
    if (!((end - start).value > kSlack)) return std::nullopt;
    return piece.part(start, end);
}

bool continues(const Piece& before, const Piece& after) {
    return before.fragmentID == after.fragmentID && std::abs(before.speed - after.speed) < kSlack &&
           std::abs((before.timelineEnd - after.timelineStart).value) < kSlack &&
           std::abs((before.sourceEnd() - after.sourceStart).value) < kSourceJoin;
}

std::vector<Piece> joined(const std::vector<Piece>& sorted) {
    std::vector<Piece> whole;
    for (const Piece& piece : sorted) {
        if (!whole.empty() && continues(whole.back(), piece))
            whole.back().timelineEnd = piece.timelineEnd;
        else
            whole.push_back(piece);
    }
    return whole;
}

std::optional<Block> blockOf(const FragmentMap::Span& span) {
    const VideoFragment& fragment = span.fragment;
    const FragmentAudio audio = fragment.audio.value_or(FragmentAudio{});
    const SourceTime start = std::max(audio.start.value_or(fragment.sourceStart), SourceTime());
    const SourceTime end = audio.end.value_or(fragment.sourceEnd);
    if (!(span.length > 0_s) || audio.isRemoved || !atLeast(end - start, kShortestSound)) return std::nullopt;

    const auto place = [&](SourceTime s) {
        return span.start + (audio.shift + (s - fragment.sourceStart)) / fragment.speed;
    };
    return Block{{fragment.id, place(start), place(end), start, fragment.speed},
                 {place(fragment.sourceStart), place(fragment.sourceEnd)},
                 {span.start, span.end()},
                 std::abs(audio.shift.value) > kSlack};
}

} // namespace

SourceTime Piece::sourceAt(EditTime t) const {
    return sourceStart + (std::clamp(t, timelineStart, std::max(timelineStart, timelineEnd)) - timelineStart) * speed;
}

EditTime Piece::timelineAt(SourceTime s) const {
    const SourceTime within = std::clamp(s, sourceStart, std::max(sourceStart, sourceEnd()));
    return timelineStart + (within - sourceStart) / std::max(speed, kSlack);
}

Piece Piece::part(EditTime from, EditTime to) const {
    Piece part = *this;
    part.timelineStart = from;
    part.timelineEnd = to;
    part.sourceStart = sourceStart + (from - timelineStart) * speed;
    return part;
}

std::vector<Block> blocks(std::span<const VideoFragment> fragments) {
    std::vector<Block> all;
    const FragmentMap map({fragments.begin(), fragments.end()});
    for (const FragmentMap::Span& span : map.spans())
        if (auto block = blockOf(span)) all.push_back(std::move(*block));
    return all;
}

std::vector<Piece> overhangs(const Block& block) {
    const Piece& piece = block.piece;
    std::vector<Piece> parts;
    if (piece.timelineStart < block.clip.start)
        parts.push_back(piece.part(piece.timelineStart, std::min(piece.timelineEnd, block.clip.start)));
    if (piece.timelineEnd > block.clip.end)
        parts.push_back(piece.part(std::max(piece.timelineStart, block.clip.end), piece.timelineEnd));
    return parts;
}

std::vector<Piece> placing(const Piece& piece, std::span<const Piece> into) {
    std::vector<Piece> list;
    for (const Piece& other : into) {
        if (!(other.timelineStart < piece.timelineEnd && piece.timelineStart < other.timelineEnd)) {
            list.push_back(other);
            continue;
        }
        if (auto before = cutTo(other, other.timelineStart, piece.timelineStart)) list.push_back(*before);
        if (auto after = cutTo(other, piece.timelineEnd, other.timelineEnd)) list.push_back(*after);
    }
    list.push_back(piece);
    return list;
}

std::optional<Piece> cutToTimeline(const Piece& piece, Seconds duration) {
    return cutTo(piece, EditTime(), EditTime(std::max(duration, 0_s)));
}

std::vector<Piece> pieces(std::span<const Block> blocks, Seconds duration) {
    PieceCanvas canvas;
    for (const Block& block : blocks)
        for (const Piece& overhang : overhangs(block)) canvas.place(overhang);
    for (const bool areMoved : {false, true})
        for (const Block& block : blocks)
            if (block.isMoved == areMoved)
                if (auto piece = cutTo(block.piece, block.clip.start, block.clip.end)) canvas.place(*piece);

    std::vector<Piece> heard;
    for (const Piece& piece : canvas.pieces())
        if (auto part = cutToTimeline(piece, duration)) heard.push_back(*part);
    return joined(heard);
}

bool hasFragmentAudio(std::span<const VideoFragment> fragments) {
    return std::ranges::any_of(fragments, [](const VideoFragment& fragment) { return fragment.audio.has_value(); });
}

bool hasMovedAudio(std::span<const VideoFragment> fragments) {
    return std::ranges::any_of(fragments, [](const VideoFragment& fragment) {
        return fragment.audio && std::abs(fragment.audio->shift.value) > kSlack;
    });
}

std::vector<Piece> unfolded(std::span<const VideoFragment> fragments) {
    std::vector<VideoFragment> open(fragments.begin(), fragments.end());
    for (VideoFragment& fragment : open)
        if (fragment.audio) fragment.audio = FragmentAudio{fragment.audio->shift, {}, {}, false};
    return pieces(blocks(open), FragmentMap(open).duration());
}

} // namespace morvelin::AudioLayout
