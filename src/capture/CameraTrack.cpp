#include "capture/CameraTrack.h"

#include <array>
#include <cmath>

#include <fmt/format.h>

namespace morvelin {

namespace {

constexpr Seconds kShortestLastFrame{1.0 / 60};

MovieSettings movieSettings(const std::filesystem::path& url, PixelSize size) {
    MovieSettings settings;
    settings.path = url;
    settings.container = MovieSettings::Container::FragmentedQuickTime;
    settings.pace = MovieSettings::Pace::RealTime;
    settings.transfer = MovieSettings::Transfer::SRGB;
    settings.size = size;
    settings.frameRate = 30;
    settings.bitRate = cameraBitRate(size);
    settings.keyFrameInterval = Seconds(1);
    return settings;
}

} // namespace

std::int64_t cameraBitRate(PixelSize size) {
    const double wanted = static_cast<double>(size.width) * size.height * 30 * 0.07;
    return std::llround(std::clamp(wanted, 3'000'000.0, 20'000'000.0));
}

CameraTrack::CameraTrack(std::filesystem::path url, MovieWriterFactory& writers, Log log)
    : m_url(std::move(url)),
      m_writers(writers),
      m_log(std::move(log)) {}

void CameraTrack::resume(HostTime now) {
    m_pauses.resume(now);
    m_lastResume = now;
}

void CameraTrack::take(const CameraFrame& frame) {
    // Frames come late: one that was seen before a pause may come in it, and one of the pause after it.
    const bool isOfPause = frame.time < m_lastResume || (m_pauses.isPaused() && frame.time >= *m_pauses.pauseStart);
    const HostTime adjusted = m_pauses.adjusted(frame.time);
    if (m_hasFailed || isOfPause || (m_lastAppendedPTS && adjusted <= *m_lastAppendedPTS)) return;
    if (m_writer == nullptr && !setUpWriter(frame.picture.size())) return;
    if (frame.picture.size() != m_recordedSize) return; // a movie has one size
    if (!m_sessionStartTime) m_sessionStartTime = adjusted;

    const std::array everything{PixelBox{0, 0, m_recordedSize.width, m_recordedSize.height}};
    if (auto appended = m_writer->append(frame.picture, adjusted - *m_sessionStartTime, everything); !appended)
        return fail("[CameraCaptureEngine] Failed to append camera sample: " + appended.error().description());
    m_lastAppendedPTS = adjusted;
}

bool CameraTrack::setUpWriter(PixelSize size) {
    auto writer = m_writers.create(movieSettings(m_url, size));
    if (!writer) {
        using enum MovieWriterError::Kind;
        fail(writer.error().kind == NoEncoder
                 ? fmt::format("[CameraCaptureEngine] No compatible codec for {}x{}", size.width, size.height)
                 : "[CameraCaptureEngine] Could not create writer: " + writer.error().description());
        return false;
    }
    m_writer = std::move(*writer);
    m_recordedSize = size;
    return true;
}

void CameraTrack::fail(const std::string& line) {
    m_log(line);
    m_hasFailed = true;
}

std::optional<CameraRecording> CameraTrack::finish(HostTime end) {
    if (!m_lastAppendedPTS) return std::nullopt;
    const HostTime adjustedEnd = std::max(m_pauses.adjusted(end), *m_lastAppendedPTS + kShortestLastFrame);
    if (auto finished = m_writer->finish(adjustedEnd - *m_sessionStartTime); !finished)
        m_log("[CameraCaptureEngine] Writer failed: " + finished.error().description());
    m_writer.reset();
    return CameraRecording{m_url, m_recordedSize, *m_sessionStartTime};
}

} // namespace morvelin
