// Edits with valid tracks for the tests of track editing, written down or random.
#pragma once

#include <string>

#include "Tracks.h"
#include "timeline/TimelineTracks.h"

namespace morvelin::test {

/// `n` spelt as an id.
inline UUID idOf(int n) { return UUID{{static_cast<std::uint8_t>(n >> 8), static_cast<std::uint8_t>(n), 1}}; }

inline ZoomKeyframe ramp(int id, double start, double transition, double factor) {
    return {idOf(id), EditTime(start), Seconds(transition), factor, ZoomTransitionType::Smooth, false};
}

inline PositionKeyframe ownedKey(int id, double time, double x, std::optional<int> owner = {}) {
    PositionKeyframe key = positionKey(time, x, 0.5);
    key.id = idOf(id);
    if (owner) key.zoomKeyframeID = idOf(*owner);
    return key;
}

/// "5:0.2 9:0.8" for keys at 5 s and 9 s, with the x that each is aimed at; an owner follows a "/".
inline std::string written(const std::vector<PositionKeyframe>& keys) {
    std::string text;
    for (const PositionKeyframe& key : keys) {
        char part[64];
        std::snprintf(part, sizeof part, "%s%.4g:%.4g", text.empty() ? "" : " ", key.time.value, key.targetX);
        text += part;
        if (key.zoomKeyframeID) text.append("/").append(std::to_string(key.zoomKeyframeID->bytes[1]));
    }
    return text;
}

/// "2+1>3" for a ramp that starts at 2 s, lasts 1 s and reaches 3×.
inline std::string written(const std::vector<ZoomKeyframe>& zooms) {
    std::string text;
    for (const ZoomKeyframe& zoom : zooms) {
        char part[96];
        std::snprintf(part, sizeof part, "%s%.4g+%.4g>%.4g", text.empty() ? "" : " ", zoom.startTime.value,
                      zoom.transitionTime.value, zoom.zoomFactor);
        text += part;
    }
    return text;
}

/// Fragments in any place of the recording that show none of it twice.
inline std::vector<VideoFragment> randomFragments(Random& random, IdSource& ids) {
    std::vector<VideoFragment> fragments;
    double source = random.number(0, 2);
    for (int i = random.count(1, 8); i > 0; --i) {
        const double end = source + random.number(0.3, 6);
        fragments.push_back(fragment(0, source, end, random.once(2) ? 1 : random.number(0.2, 8)));
        fragments.back().id = ids.next();
        source = end + (random.once(2) ? 0 : random.number(0, 2));
    }
    std::ranges::shuffle(fragments, random.engine());
    for (std::size_t i = 0; i < fragments.size(); ++i) fragments[i].order = static_cast<std::int64_t>(i);
    return fragments;
}

/// An opening key, then ramps apart from each other, some touching; keys of ramps and free ones, 0.05 s apart.
inline ZoomTracks randomCamera(Random& random, double end, IdSource& ids) {
    ZoomTracks tracks{{ZoomKeyframe::baseline(ids)}, {PositionKeyframe::baseline(ids)}};
    for (double t = random.number(0, 2); t < end; t += random.once(4) ? 0 : random.number(0, 3)) {
        const double transition = random.number(0.05, 1.5);
        tracks.zoom.push_back({ids.next(), EditTime(t), Seconds(transition), random.once(3) ? 1 : random.number(1, 4),
                               ZoomTransitionType::Smooth, false});
        t += transition;
    }
    for (double t = 0.05 + random.number(0, 2); t < end; t += random.once(3) ? 0.05 : random.number(0.05, 2)) {
        const ZoomKeyframe& zoom =
            tracks.zoom[static_cast<std::size_t>(random.count(0, static_cast<int>(tracks.zoom.size()) - 1))];
        PositionKeyframe key = positionKey(t, random.number(0, 1), random.number(0, 1));
        key.id = ids.next();
        if (zoom.zoomFactor > 1) key.zoomKeyframeID = zoom.id;
        tracks.position.push_back(key);
    }
    return tracks;
}

inline TimelineTracks randomTracks(Random& random, IdSource& ids) {
    TimelineTracks tracks;
    tracks.fragments = randomFragments(random, ids);
    const double end = tracks.duration().value;
    tracks.camera = randomCamera(random, end, ids);
    for (int i = 0; i < 4; ++i) {
        const double start = random.number(0, end);
        const EditTime until(random.number(start, end));
        tracks.masks.push_back({ids.next(), EditTime(start), until, {}, 24});
        tracks.focuses.push_back({ids.next(), EditTime(start), until, {}, 0.5_s, {}, {}});
        tracks.tapTaps.push_back({ids.next(), EditTime(start), until, 0.5, 0.5, 0.12, {}});
    }
    return tracks;
}

} // namespace morvelin::test
