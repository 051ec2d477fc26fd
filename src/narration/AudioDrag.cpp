#include "narration/AudioDrag.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "narration/AudioLayout.h"
#include "timeline/FragmentMap.h"

namespace morvelin::AudioDrag {

namespace {

using Spans = std::span<const FragmentMap::Span>;

constexpr Seconds kShortestSound = 0.02_s;
constexpr Seconds kSourceGap = 0.001_s; ///< up to this far apart, two fragments continue the same source

Seconds shiftOf(const VideoFragment& fragment) { return fragment.audio ? fragment.audio->shift : Seconds(); }

bool areClose(double a, double b, double within) { return std::abs(a - b) <= within + 1e-9; }

bool continues(const VideoFragment& before, const VideoFragment& after) {
    return areClose(before.sourceEnd.value, after.sourceStart.value, kSourceGap.value) &&
           areClose(before.speed, after.speed, AudioLayout::kSlack) &&
           areClose(shiftOf(before).value, shiftOf(after).value, AudioLayout::kSlack);
}

FragmentAudio trimmed(const VideoFragment& fragment, FragmentAudio audio, Kind kind, Seconds by, Seconds length) {
    const SourceTime start = audio.start.value_or(fragment.sourceStart);
    const SourceTime end = audio.end.value_or(fragment.sourceEnd);
    if (kind == Kind::TrimStart)
        audio.start = std::max(std::min(start + by, end - kShortestSound), SourceTime());
    else
        audio.end = std::max(std::min(end + by, SourceTime(length)), start + kShortestSound);
    audio.isRemoved = false;
    return audio;
}

/// Where the dragged edge of the sound lies on the timeline.
EditTime edgeOnTimeline(const FragmentMap::Span& span, const FragmentAudio& audio, Kind kind) {
    const SourceTime edge = kind == Kind::TrimStart ? *audio.start : *audio.end;
    return span.start + (audio.shift + (edge - span.fragment.sourceStart)) / span.fragment.speed;
}

/// The neighbours, nearest first, that the edge has passed whole and that continue the dragged fragment.
std::vector<std::size_t> passed(Spans spans, std::size_t dragged, EditTime edge, Kind kind) {
    std::vector<std::size_t> all;
    const Seconds slack(AudioLayout::kSlack);
    if (kind == Kind::TrimEnd) {
        for (std::size_t i = dragged + 1; i < spans.size() && spans[i].end() <= edge + slack; ++i) {
            if (!continues(spans[i - 1].fragment, spans[i].fragment)) break;
            all.push_back(i);
        }
    } else {
        for (std::size_t i = dragged; i > 0 && spans[i - 1].start >= edge - slack; --i) {
            if (!continues(spans[i - 1].fragment, spans[i].fragment)) break;
            all.push_back(i - 1);
        }
    }
    return all;
}

std::optional<Merge> mergeOf(Spans spans, std::size_t dragged, const FragmentAudio& audio, Kind kind) {
    const auto gone = passed(spans, dragged, edgeOnTimeline(spans[dragged], audio, kind), kind);
    if (gone.empty()) return std::nullopt;

    VideoFragment survivor = spans[dragged].fragment;
    survivor.sourceStart = std::min(survivor.sourceStart, spans[gone.back()].fragment.sourceStart);
    survivor.sourceEnd = std::max(survivor.sourceEnd, spans[gone.back()].fragment.sourceEnd);
    // The other edge stays where it was, also if it followed the fragment's own edge.
    survivor.audio = FragmentAudio{audio.shift, audio.start.value_or(spans[dragged].fragment.sourceStart),
                                   audio.end.value_or(spans[dragged].fragment.sourceEnd), false};
    survivor.audio = simplified(survivor, survivor.audio);

    Merge merge{{}, survivor.id, {}};
    for (const std::size_t i : gone) merge.absorbed.push_back(spans[i].fragment.id);
    const std::set<std::size_t> absorbed(gone.begin(), gone.end());
    for (std::size_t i = 0; i < spans.size(); ++i) {
        if (absorbed.contains(i)) continue;
        merge.fragments.push_back(i == dragged ? survivor : spans[i].fragment);
        merge.fragments.back().order = static_cast<std::int64_t>(merge.fragments.size()) - 1;
    }
    return merge;
}

} // namespace

std::optional<FragmentAudio> simplified(const VideoFragment& fragment, const std::optional<FragmentAudio>& audio) {
    if (!audio) return std::nullopt;
    const auto follows = [](const std::optional<SourceTime>& edge, SourceTime own) {
        return !edge || areClose(edge->value, own.value, AudioLayout::kSlack);
    };
    const bool isPlain = !audio->isRemoved && areClose(audio->shift.value, 0, AudioLayout::kSlack) &&
                         follows(audio->start, fragment.sourceStart) && follows(audio->end, fragment.sourceEnd);
    return isPlain ? std::nullopt : audio;
}

std::optional<AudioDragState> began(Kind kind, const UUID& fragmentID, std::span<const VideoFragment> fragments) {
    const auto found = std::ranges::find(fragments, fragmentID, &VideoFragment::id);
    if (found == fragments.end() || !(found->length() > 0_s)) return std::nullopt;
    return AudioDragState{fragmentID, kind, found->audio, found->audio, std::nullopt};
}

AudioDragState dragged(AudioDragState state, Seconds by, Seconds recordingLength,
                       std::span<const VideoFragment> fragments) {
    const FragmentMap map({fragments.begin(), fragments.end()});
    const auto span = std::ranges::find(map.spans(), state.fragmentID,
                                        [](const FragmentMap::Span& each) { return each.fragment.id; });
    if (span == map.spans().end() || !(span->length > 0_s)) return state;

    FragmentAudio audio = state.base.value_or(FragmentAudio{});
    const Seconds inSource = by * span->fragment.speed;
    state.merge.reset();
    if (state.kind == Kind::Move) {
        audio.shift += inSource;
    } else {
        audio = trimmed(span->fragment, audio, state.kind, inSource, recordingLength);
        state.merge = mergeOf(map.spans(), static_cast<std::size_t>(span - map.spans().begin()), audio, state.kind);
    }
    state.audio = simplified(span->fragment, audio);
    return state;
}

std::vector<VideoFragment> ended(const AudioDragState& state, std::span<const VideoFragment> fragments) {
    if (state.merge) return state.merge->fragments;
    std::vector<VideoFragment> after(fragments.begin(), fragments.end());
    for (VideoFragment& fragment : after)
        if (fragment.id == state.fragmentID) fragment.audio = state.audio;
    return after;
}

} // namespace morvelin::AudioDrag
