#include "speech/CaptionEdits.h"

#include <algorithm>

#include "core/base/Text.h"
#include "speech/Words.h"
#include "timeline/Tolerance.h"

namespace morvelin::CaptionEdits {

namespace {

using Cues = std::vector<CaptionCue>;

constexpr Seconds kNewCue = 2_s;

Cues::iterator find(CaptionTrack& track, const UUID& id) { return std::ranges::find(track.cues, id, &CaptionCue::id); }

std::string joined(std::string_view first, std::string_view second) {
    std::string text = trimmed(first);
    const std::string rest = trimmed(second);
    if (!text.empty() && !rest.empty()) text += ' ';
    return text + rest;
}

/// As many words as texts, each with its old timing.
std::vector<TranscriptWord> retexted(std::vector<TranscriptWord> words, std::vector<std::string> texts) {
    for (std::size_t i = 0; i < words.size(); ++i) words[i].text = std::move(texts[i]);
    return words;
}

std::vector<TranscriptWord> sharedOut(const CaptionCue& cue, std::vector<std::string> texts) {
    const Seconds slice = std::max(cue.endT - cue.t, 0_s) / static_cast<double>(texts.size());
    const double confidence = meanConfidence(cue.words);
    std::vector<TranscriptWord> words;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const SourceTime t = cue.t + slice * static_cast<double>(i);
        words.push_back(rounded({t, std::min(cue.endT, t + slice), std::move(texts[i]), confidence}));
    }
    return words;
}

} // namespace

const CaptionCue* cueAt(const CaptionTrack& track, SourceTime time) {
    const auto found = std::ranges::find_if(
        track.cues, [&](const CaptionCue& cue) { return atLeast(time, cue.t) && atMost(time, cue.endT); });
    return found == track.cues.end() ? nullptr : &*found;
}

const CaptionCue* cueByID(const CaptionTrack& track, const UUID& id) {
    const auto found = std::ranges::find(track.cues, id, &CaptionCue::id);
    return found == track.cues.end() ? nullptr : &*found;
}

std::vector<SourceTime> snapTimes(const CaptionTrack& track, const UUID& excluding) {
    std::vector<SourceTime> times;
    for (const CaptionCue& cue : track.cues) {
        if (cue.id != excluding) times.insert(times.end(), {cue.t, cue.endT});
        for (const TranscriptWord& word : cue.words) times.insert(times.end(), {word.t, word.endT});
    }
    std::ranges::sort(times);
    times.erase(std::ranges::unique(times).begin(), times.end());
    return times;
}

bool retime(CaptionTrack& track, const UUID& id, SourceTime start, SourceTime end, Seconds duration) {
    const auto cue = find(track, id);
    if (cue == track.cues.end()) return false;
    const SourceTime prev = cue == track.cues.begin() ? SourceTime() : std::prev(cue)->endT;
    const SourceTime next = cue + 1 == track.cues.end() ? SourceTime(std::max(duration, 0_s)) : (cue + 1)->t;

    SourceTime s = std::max(start, prev);
    SourceTime e = std::min(end, next);
    if (!atLeast(e - s, kShortestCue)) {
        if (start == cue->t) { // the right edge was dragged
            e = std::min(std::max(e, s + kShortestCue), next);
            s = std::min(e - kShortestCue, s);
        } else {
            s = std::max(std::min(e - kShortestCue, s), prev);
            e = std::max(e, s + kShortestCue);
        }
    }
    const bool fits = atMost(e, next) && atLeast(s, prev) && atLeast(e - s, kShortestCue);
    if (!fits || (s == cue->t && e == cue->endT)) return false;
    cue->t = s;
    cue->endT = e;
    return true;
}

bool setText(CaptionTrack& track, const UUID& id, std::string_view text) {
    const auto cue = find(track, id);
    std::string wanted = trimmed(text);
    if (cue == track.cues.end() || wanted == cue->text) return false;
    auto texts = wordsIn(wanted);
    cue->text = std::move(wanted);
    if (texts.size() == cue->words.size())
        cue->words = retexted(std::move(cue->words), std::move(texts));
    else
        cue->words = sharedOut(*cue, std::move(texts));
    return true;
}

std::optional<UUID> addCue(CaptionTrack& track, SourceTime time, Seconds duration, IdSource& ids) {
    if (cueAt(track, time)) return std::nullopt;
    const auto later = std::ranges::find_if(track.cues, [&](const CaptionCue& cue) { return cue.t > time; });
    const SourceTime limit = later == track.cues.end() ? SourceTime(std::max(duration, 0_s)) : later->t;
    const SourceTime end = std::min(limit, time + kNewCue);
    if (!atLeast(end - time, kShortestCue)) return std::nullopt;
    const UUID id = ids.next();
    track.cues.push_back({id, time, end, "", {}});
    std::ranges::stable_sort(track.cues, {}, &CaptionCue::t);
    return id;
}

std::optional<UUID> split(CaptionTrack& track, const UUID& id, SourceTime time, IdSource& ids) {
    const auto left = find(track, id);
    if (left == track.cues.end() || !atLeast(time - left->t, kShortestCue) || !atLeast(left->endT - time, kShortestCue))
        return std::nullopt;
    CaptionCue right{ids.next(), time, left->endT, "", {}};
    for (const TranscriptWord& word : left->words)
        if (word.t >= time) right.words.push_back(word);
    std::erase_if(left->words, [&](const TranscriptWord& word) { return word.t >= time; });
    right.text = textOf(right.words);
    if (!left->words.empty()) left->text = textOf(left->words);
    left->endT = time;
    const UUID made = right.id;
    track.cues.insert(left + 1, std::move(right));
    return made;
}

bool merge(CaptionTrack& track, const UUID& id) {
    const auto cue = find(track, id);
    if (cue == track.cues.end() || cue + 1 == track.cues.end()) return false;
    const CaptionCue next = std::move(*(cue + 1));
    track.cues.erase(cue + 1);
    cue->endT = next.endT;
    cue->text = joined(cue->text, next.text);
    cue->words.insert(cue->words.end(), next.words.begin(), next.words.end());
    return true;
}

bool remove(CaptionTrack& track, const UUID& id) {
    return std::erase_if(track.cues, [&](const CaptionCue& cue) { return cue.id == id; }) > 0;
}

} // namespace morvelin::CaptionEdits
