#include "capture/VideoTrack.h"

#include <fmt/format.h>

#include "media/ColorConversion.h"

namespace morvelin {

namespace {

/// A frame that could not be appended yet is tried again after this time.
constexpr Seconds kRetryDelay{1.0 / 60};
constexpr Seconds kShortestFrame{0.001};
/// Nothing to do: a day.
constexpr Seconds kLongRest{86'400};

} // namespace

VideoTrack::VideoTrack(std::unique_ptr<MovieWriter> writer, PixelSize screenSize, PixelSize movieSize, Log log)
    : m_writer(std::move(writer)),
      m_log(std::move(log)),
      m_picture(movieSize, Subsampling::Quarter) {
    if (screenSize != movieSize) m_scaler.emplace(screenSize, movieSize);
}

Result<void, MovieWriterError> VideoTrack::take(const ScreenFrame& frame, const PauseTimeline& pauses) {
    convert(frame);
    return append(frame.time, pauses);
}

void VideoTrack::convert(const ScreenFrame& frame) {
    if (!m_scaler) {
        for (const PixelBox& box : frame.changed) m_unwritten.push_back(convertToPicture(frame.pixels, box, m_picture));
        return;
    }
    std::vector<PixelBox> scaled;
    for (const PixelBox& box : frame.changed) scaled.push_back(m_scaler->update(frame.pixels, box));
    for (const PixelBox& box : scaled) m_unwritten.push_back(convertToPicture(m_scaler->pixels(), box, m_picture));
}

/// Drops nothing for good: a frame whose time is not past the last one's, as may happen right after a pause, stays in
/// the picture and goes into the movie with the next attempt.
Result<void, MovieWriterError> VideoTrack::append(HostTime time, const PauseTimeline& pauses) {
    const HostTime adjusted = pauses.adjusted(time);
    if (m_lastAppendedPTS && adjusted <= *m_lastAppendedPTS) return {};
    if (!m_sessionStartTime) startSession(time, adjusted);
    m_unflushedSince = time;
    return write(adjusted);
}

Result<void, MovieWriterError> VideoTrack::write(HostTime adjusted) {
    auto appended = m_writer->append(m_picture, adjusted - *m_sessionStartTime, m_unwritten);
    if (!appended) {
        m_log("[CaptureEngine] Failed to append video sample");
        return appended;
    }
    m_unwritten.clear();
    m_lastAppendedPTS = adjusted;
    ++m_appendedFrames;
    return {};
}

void VideoTrack::startSession(HostTime pts, HostTime adjusted) {
    m_firstVideoPTS = pts;
    m_sessionStartTime = adjusted;
    m_log(fmt::format("[CaptureEngine] Started writer session at PTS={}", adjusted.value));
}

Seconds VideoTrack::patience(HostTime now) const {
    if (!m_unwritten.empty()) return kRetryDelay;
    if (!m_unflushedSince) return kLongRest;
    return std::max(*m_unflushedSince + kFlushDelay - now, Seconds(0));
}

Result<void, MovieWriterError> VideoTrack::idle(HostTime now, const PauseTimeline& pauses) {
    if (!m_unwritten.empty() && !pauses.isPaused())
        if (auto appended = append(now, pauses); !appended) return appended;
    return now - m_unflushedSince.value_or(now) < kFlushDelay ? Result<void, MovieWriterError>() : flush(now, pauses);
}

/// An encoder that is told the frames' times holds one frame back until the next comes, so the last one is said again.
Result<void, MovieWriterError> VideoTrack::flush(HostTime now, const PauseTimeline& pauses) {
    if (!std::exchange(m_unflushedSince, std::nullopt)) return {};
    const HostTime adjusted = std::max(pauses.adjusted(now), *m_lastAppendedPTS + kShortestFrame);
    if (auto written = write(adjusted); !written) return written;
    return m_writer->flush();
}

Result<void, MovieWriterError> VideoTrack::finish(HostTime adjustedEnd) {
    return m_writer->finish(adjustedEnd - m_sessionStartTime.value_or(adjustedEnd));
}

} // namespace morvelin
