#include "narration/AudioStack.h"

#include <map>

#include "narration/Coverage.h"
#include "timeline/FragmentMap.h"

namespace morvelin::AudioStack {

namespace {

bool isThere(const std::filesystem::path& file) {
    std::error_code error;
    return std::filesystem::exists(file, error);
}

/// Of takes with one id the first counts; removed ones are not played.
std::map<UUID, const NarrationTake*> liveByID(std::span<const NarrationTake> takes) {
    std::map<UUID, const NarrationTake*> byID;
    for (const NarrationTake& take : takes) byID.emplace(take.id(), take.deletedAt ? nullptr : &take);
    return byID;
}

std::vector<NarrationPiece> byTakeTime(std::vector<NarrationPiece> pieces) {
    std::ranges::stable_sort(pieces, {}, &NarrationPiece::takeStart);
    return pieces;
}

Piece laidOut(const NarrationPiece& piece, Seconds takeDuration) {
    const Seconds length = std::min(piece.takeEnd, takeDuration) - piece.takeStart;
    return {{}, piece.timelineStart, piece.timelineStart + length, SourceTime(piece.takeStart), 1};
}

Layer takeLayer(const AudioTrackRef& track, NarrationTake take, std::filesystem::path url, Seconds duration) {
    take.trackID = track.id;
    take.arrangement = track.pieces;
    Layer layer{track.id, std::nullopt, std::move(url), {}};
    for (const NarrationPiece& each : byTakeTime(track.pieces ? *track.pieces : take.pieces()))
        if (auto piece = AudioLayout::cutToTimeline(laidOut(each, take.duration), duration))
            layer.pieces.push_back(*piece);
    layer.take = std::move(take);
    return layer;
}

} // namespace

std::vector<Layer> layers(std::span<const AudioTrackRef> tracks, const Edit& edit) {
    const Seconds duration = FragmentMap({edit.fragments.begin(), edit.fragments.end()}).duration();
    const auto live = liveByID(edit.takes);
    std::vector<Layer> layers;
    for (const AudioTrackRef& track : tracks) {
        if (!track.isEnabled) continue;
        if (!track.takeID) {
            if (edit.recording == RecordingSound::Audible)
                layers.push_back({track.id, std::nullopt, std::nullopt,
                                  AudioLayout::pieces(AudioLayout::blocks(edit.fragments), duration)});
            continue;
        }
        const auto found = live.find(*track.takeID);
        if (found == live.end() || !found->second) continue;
        std::filesystem::path url = found->second->fileURL(edit.bundle);
        if (isThere(url)) layers.push_back(takeLayer(track, *found->second, std::move(url), duration));
    }
    return layers;
}

std::vector<std::vector<Piece>> audible(std::span<const Layer> layers) {
    std::vector<std::vector<Piece>> heard;
    AudioLayout::Coverage above;
    for (const Layer& layer : layers) {
        std::vector<Piece>& rest = heard.emplace_back();
        for (const Piece& piece : layer.pieces) std::ranges::move(above.leftOf(piece), std::back_inserter(rest));
        std::ranges::stable_sort(rest, {}, &Piece::timelineStart);
        above.add(layer.pieces);
    }
    return heard;
}

std::vector<EditRange> covered(std::span<const Layer> layers, std::size_t index) {
    AudioLayout::Coverage above;
    for (const Layer& layer : layers.first(std::min(index, layers.size()))) above.add(layer.pieces);
    return above.spans();
}

Mix mix(std::span<const Layer> layers) {
    Mix mix;
    const auto heard = audible(layers);
    for (std::size_t i = 0; i < layers.size(); ++i) {
        if (heard[i].empty()) continue;
        if (layers[i].url)
            mix.takes.push_back({*layers[i].url, heard[i]});
        else
            mix.recording = heard[i];
    }
    return mix;
}

std::optional<std::vector<Piece>> heardRecording(std::span<const Layer> layers,
                                                 std::span<const VideoFragment> fragments) {
    if (!AudioLayout::hasFragmentAudio(fragments)) return std::nullopt;
    const auto recording = std::ranges::find_if(layers, [](const Layer& layer) { return !layer.take; });
    if (recording == layers.end()) return std::nullopt;
    return audible(layers)[static_cast<std::size_t>(recording - layers.begin())];
}

} // namespace morvelin::AudioStack
