#include "render/DecodeAhead.h"

namespace morvelin {

namespace {

constexpr std::size_t kFramesAhead = 4;

} // namespace

DecodeAhead::DecodeAhead(const Film& film, FilmPart part, MovieReader& reader)
    : m_film(film),
      m_part(part),
      m_reader(reader),
      m_queue(kFramesAhead),
      m_thread([this](const std::stop_token& stop) { run(stop); }) {}

Result<ShownFrame, ExportError> DecodeAhead::next(const std::stop_token& stop) {
    if (auto item = m_queue.pop(stop)) return std::move(*item);
    return failure(ExportError{ExportError::Kind::Stopped, {}, {}});
}

void DecodeAhead::run(const std::stop_token& stop) {
    std::optional<ShownFrame> shown;
    for (std::int64_t i = m_part.first; i < m_part.end; ++i) {
        const SourceTime t = m_film.composition.pictureTime(m_film.frameTime(i));
        if (shown && shown->frame.start <= t && t < shown->frame.end) {
            ++shown->count;
            continue;
        }
        auto frame = m_reader.frameAt(t);
        if (!frame) {
            m_queue.push(failure(ExportError::from(frame.error())), stop);
            return m_queue.close();
        }
        if (shown && shown->frame.number == frame->number) {
            ++shown->count;
            continue;
        }
        if (shown && !m_queue.push(std::move(*shown), stop)) return;
        shown = ShownFrame{std::move(*frame), 1};
    }
    if (shown) m_queue.push(std::move(*shown), stop);
    m_queue.close();
}

} // namespace morvelin
