#include "render/DecodeAhead.h"

#include <utility>

namespace morvelin {

namespace {

constexpr std::size_t kFramesAhead = 4;
/// Damage lasts up to the movie's next key frame; each attempt before it would decode in vain from the one before.
constexpr Seconds kRetryAfter = 0.5_s;

bool isSame(const Result<MovieFrame, MovieReaderError>& a, const Result<MovieFrame, MovieReaderError>& b) {
    return a && b ? a->number == b->number : !a && !b;
}

} // namespace

DecodeAhead::DecodeAhead(FilmPart part, MovieTimeOf timeOf, MovieReader& reader)
    : m_part(part),
      m_timeOf(std::move(timeOf)),
      m_reader(reader),
      m_queue(kFramesAhead),
      m_thread([this](const std::stop_token& stop) { run(stop); }) {}

void DecodeAhead::run(const std::stop_token& stop) {
    std::optional<FrameRun> shown;
    SourceTime failedAt;
    const auto stillShows = [&](SourceTime t) {
        if (!shown->frame) return failedAt - kRetryAfter < t && t < failedAt + kRetryAfter;
        return shown->frame->start <= t && t < shown->frame->end;
    };
    for (std::int64_t i = m_part.first; i < m_part.end; ++i) {
        const SourceTime t = m_timeOf(i);
        if (shown && stillShows(t)) {
            ++shown->count;
            continue;
        }
        auto frame = m_reader.frameAt(t);
        if (!frame) failedAt = t;
        if (shown && isSame(shown->frame, frame)) {
            ++shown->count;
            continue;
        }
        if (shown && !m_queue.push(std::move(*shown), stop)) return;
        shown.emplace(FrameRun{std::move(frame), 1});
    }
    if (shown) m_queue.push(std::move(*shown), stop);
    m_queue.close();
}

} // namespace morvelin
