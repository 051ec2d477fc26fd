#include "capture/SoundTrack.h"

#include <algorithm>
#include <utility>

namespace morvelin {

void SoundTrack::pause(HostTime time) {
    Span& last = m_spans.back();
    if (last.end != kOpenEnd) return;
    last.end = std::max(m_sound.frameAt(time), last.start);
    m_surplus += std::max<std::int64_t>(m_sound.taken() - last.end, 0);
}

void SoundTrack::resume(HostTime time) {
    const std::int64_t pauseStart = m_spans.back().end;
    if (pauseStart == kOpenEnd) return;
    const std::int64_t start = std::max(m_sound.frameAt(time), pauseStart);
    m_spans.push_back({start, kOpenEnd});
    m_surplus -= std::clamp<std::int64_t>(m_sound.taken() - start, 0, m_surplus);
}

void SoundTrack::takeTo(HostTime time, std::vector<float>& out) {
    const std::int64_t first = m_sound.taken();
    m_taken.clear();
    m_sound.takeTo(m_sound.frameAt(time), m_taken);
    for (const Span& span : m_spans) keep(span, first, out);
    while (m_spans.size() > 1 && m_spans.front().end <= m_sound.taken()) m_spans.erase(m_spans.begin());
}

/// Appends what of `m_taken`, whose first frame is number `first`, lies in the span.
void SoundTrack::keep(const Span& span, std::int64_t first, std::vector<float>& out) {
    std::int64_t from = std::max(span.start, first);
    const std::int64_t to = std::min(span.end, m_sound.taken());
    const std::int64_t surplus = std::clamp<std::int64_t>(to - from, 0, m_surplus);
    m_surplus -= surplus;
    from += surplus;
    for (std::int64_t frame = from; frame < to; ++frame) {
        const std::int64_t fromEdge = std::min({frame - span.start, span.end - frame, kSoundFade});
        const float gain = static_cast<float>(fromEdge) / static_cast<float>(kSoundFade);
        const auto at = static_cast<std::size_t>((frame - first) * kSoundChannels);
        out.push_back(m_taken[at] * gain);
        out.push_back(m_taken[at + 1] * gain);
    }
    m_length += std::max<std::int64_t>(to - from, 0);
}

} // namespace morvelin
