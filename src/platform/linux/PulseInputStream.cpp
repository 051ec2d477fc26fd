#include "platform/linux/PulseInputStream.h"

#include <fmt/format.h>
#include <pulse/pulseaudio.h>

namespace morvelin {

namespace {

/// How much sound comes at once.
constexpr Seconds kChunk{0.04};
/// How often the server is asked how old its sound is.
constexpr Seconds kTimeInterval{0.25};
constexpr Seconds kOpenPatience{3};
constexpr Seconds kRetryDelay{1};
constexpr pa_sample_spec kForm{PA_SAMPLE_FLOAT32NE, kSoundRate, kSoundChannels};

pa_buffer_attr bufferOf(Seconds chunk) {
    constexpr auto kServerChooses = static_cast<std::uint32_t>(-1);
    const auto bytes = static_cast<std::uint32_t>(pa_usec_to_bytes(static_cast<pa_usec_t>(chunk.value * 1e6), &kForm));
    return {kServerChooses, kServerChooses, kServerChooses, kServerChooses, bytes};
}

Seconds lengthOf(std::int64_t frames) { return Seconds(static_cast<double>(frames) / kSoundRate); }

/// What is recorded of a device: an output has a monitor, an input is recorded itself unless it is some output's monitor.
std::optional<std::string> recordedName(const pa_sink_info& sink) {
    return sink.monitor_source_name != nullptr ? std::optional<std::string>(sink.monitor_source_name) : std::nullopt;
}
std::optional<std::string> recordedName(const pa_source_info& source) {
    return source.monitor_of_sink == PA_INVALID_INDEX ? std::optional<std::string>(source.name) : std::nullopt;
}

} // namespace

Result<std::unique_ptr<AudioInputStream>, AudioInputError> PulseInputStream::open(
    std::shared_ptr<PulseConnection> connection, AudioInputTarget target, AudioInputListener& listener,
    const WallClock& clock) {
    std::unique_ptr<PulseInputStream> stream(
        new PulseInputStream(std::move(connection), std::move(target), listener, clock));
    const PulseConnection::Lock lock(*stream->m_connection);
    stream->m_connection->add(*stream);
    stream->findDevice();
    const auto isDecided = [&] { return stream->m_isRunning || stream->m_loss; };
    if (!stream->m_connection->waitUntil(isDecided, kOpenPatience))
        stream->m_loss = {AudioInputError::Kind::DeviceFailed, "The sound server does not answer."};
    if (stream->m_loss) {
        const AudioInputError reason = *stream->m_loss;
        return failure(reason);
    }
    stream->m_isOpen = true;
    return stream;
}

PulseInputStream::PulseInputStream(std::shared_ptr<PulseConnection> connection, AudioInputTarget target,
                                   AudioInputListener& listener, const WallClock& clock)
    : m_connection(std::move(connection)),
      m_target(std::move(target)),
      m_listener(listener),
      m_clock(clock) {}

PulseInputStream::~PulseInputStream() {
    const PulseConnection::Lock lock(*m_connection);
    m_connection->remove(*this);
    m_retry.reset();
    drop();
}

void PulseInputStream::reopen() {
    const PulseConnection::Lock lock(*m_connection);
    drop();
    findDevice();
}

void PulseInputStream::serverWent() {
    drop();
    lose({AudioInputError::Kind::NoSoundServer, "The sound server has gone away."});
}

// ------------------------------------------------------------------------------------------- which device

void PulseInputStream::findDevice() {
    pa_context* context = m_connection->context();
    if (context == nullptr) return;
    if (m_question != nullptr) {
        m_mustAskAgain = true;
        return;
    }
    m_answer.reset();
    if (const auto* microphone = std::get_if<Microphone>(&m_target)) {
        const char* name = microphone->id.empty() ? "@DEFAULT_SOURCE@" : microphone->id.c_str();
        const pa_source_info_cb_t answered = [](pa_context*, const pa_source_info* source, int end, void* self) {
            answer(source, end, self);
        };
        m_question = pa_context_get_source_info_by_name(context, name, answered, this);
    } else {
        const pa_sink_info_cb_t answered = [](pa_context*, const pa_sink_info* sink, int end, void* self) {
            answer(sink, end, self);
        };
        m_question = pa_context_get_sink_info_by_name(context, "@DEFAULT_SINK@", answered, this);
    }
}

/// The server's answer comes in parts: a device, if there is one, and the end.
template <class DeviceRecord>
void PulseInputStream::answer(const DeviceRecord* device, int end, void* self) {
    auto* stream = static_cast<PulseInputStream*>(self);
    if (end == 0) {
        stream->m_answer = recordedName(*device);
        return;
    }
    pa_operation_unref(std::exchange(stream->m_question, nullptr));
    if (std::exchange(stream->m_mustAskAgain, false)) return stream->findDevice();
    stream->foundDevice();
}

void PulseInputStream::foundDevice() {
    if (!m_answer) {
        drop();
        return lose(missing());
    }
    if (m_stream != nullptr && m_device == *m_answer) return;
    drop();
    m_device = *m_answer;
    start();
}

AudioInputError PulseInputStream::missing() const {
    const auto* microphone = std::get_if<Microphone>(&m_target);
    if (microphone == nullptr)
        return {AudioInputError::Kind::DeviceNotFound, "There is no sound output that could be recorded."};
    if (microphone->id.empty()) return {AudioInputError::Kind::DeviceNotFound, "No microphone is connected."};
    return {AudioInputError::Kind::DeviceNotFound,
            fmt::format("The microphone “{}” is not connected.", microphone->id)};
}

// ------------------------------------------------------------------------------------------- its sound

void PulseInputStream::start() {
    m_stream = pa_stream_new(m_connection->context(), "Recording", &kForm, nullptr);
    if (m_stream == nullptr) return lose({AudioInputError::Kind::DeviceFailed, m_connection->lastError() + "."});
    const auto changed = [](pa_stream*, void* self) { static_cast<PulseInputStream*>(self)->streamChanged(); };
    const auto readable = [](pa_stream*, std::size_t, void* self) { static_cast<PulseInputStream*>(self)->read(); };
    pa_stream_set_state_callback(m_stream, changed, this);
    pa_stream_set_read_callback(m_stream, readable, this);
    // The server shall not move it: which device is meant is known better here.
    constexpr auto kFlags = static_cast<pa_stream_flags_t>(PA_STREAM_ADJUST_LATENCY | PA_STREAM_DONT_MOVE);
    const pa_buffer_attr buffer = bufferOf(kChunk);
    if (pa_stream_connect_record(m_stream, m_device.c_str(), &buffer, kFlags) < 0) refused();
}

void PulseInputStream::drop() {
    if (m_question != nullptr) {
        pa_operation_cancel(m_question);
        pa_operation_unref(std::exchange(m_question, nullptr));
    }
    m_mustAskAgain = false;
    if (m_timeQuestion != nullptr) {
        pa_operation_cancel(m_timeQuestion);
        pa_operation_unref(std::exchange(m_timeQuestion, nullptr));
    }
    m_isRunning = false;
    if (m_stream == nullptr) return;
    pa_stream_set_state_callback(m_stream, nullptr, nullptr);
    pa_stream_set_read_callback(m_stream, nullptr, nullptr);
    (void)pa_stream_disconnect(m_stream);
    pa_stream_unref(std::exchange(m_stream, nullptr));
}

void PulseInputStream::streamChanged() {
    const pa_stream_state_t state = pa_stream_get_state(m_stream);
    if (state == PA_STREAM_READY) {
        m_hasGap = true;
        m_isRunning = true;
        m_framesRead = 0;
        m_mark.reset();
        askTime();
        returned();
    } else if (!PA_STREAM_IS_GOOD(state)) {
        m_isRunning ? ended() : refused();
    }
}

/// The device has gone, most often; another may be meant now.
void PulseInputStream::ended() {
    drop();
    findDevice();
}

void PulseInputStream::refused() {
    const std::string reason = m_connection->lastError();
    drop();
    lose({AudioInputError::Kind::DeviceFailed, fmt::format("The sound server refused it: {}.", reason)});
    if (m_connection->context() != nullptr) m_retry.emplace(*m_connection, kRetryDelay, [this] { findDevice(); });
}

void PulseInputStream::read() {
    if (m_mark && m_clock.uptime() - m_mark->askedAt > kTimeInterval) askTime();
    const void* bytes = nullptr;
    std::size_t length = 0;
    while (pa_stream_readable_size(m_stream) > 0 && pa_stream_peek(m_stream, &bytes, &length) == 0 && length > 0) {
        if (bytes == nullptr || !m_mark) {
            m_hasGap = true; // sound that was lost, or from before the server said how old it is
        } else {
            const HostTime time = m_mark->time + lengthOf(m_framesRead - m_mark->frame);
            const std::span samples(static_cast<const float*>(bytes), length / sizeof(float));
            if (m_isOpen) m_listener.soundCame({time, samples, std::exchange(m_hasGap, false)});
        }
        m_framesRead += static_cast<std::int64_t>(length / pa_frame_size(&kForm));
        pa_stream_drop(m_stream);
    }
}

/// The server's own word on how old its sound is. Libpulse would smooth it, at the price of following it late; whoever
/// takes the sound has to smooth it anyway.
void PulseInputStream::askTime() {
    const auto told = [](pa_stream*, int succeeded, void* self) {
        if (succeeded != 0) static_cast<PulseInputStream*>(self)->timeTold();
    };
    if (m_timeQuestion != nullptr) return;
    m_timeQuestion = pa_stream_update_timing_info(m_stream, told, this);
}

void PulseInputStream::timeTold() {
    pa_operation_unref(std::exchange(m_timeQuestion, nullptr));
    const pa_timing_info* told = pa_stream_get_timing_info(m_stream);
    if (told == nullptr) return;
    const HostTime now = m_clock.uptime();
    // What a monitor gives has yet to go through the output before it is heard.
    const auto micros = static_cast<double>(told->transport_usec + told->source_usec) -
                        static_cast<double>(told->sink_usec);
    const auto unread = static_cast<std::int64_t>(told->write_index - told->read_index) /
                        static_cast<std::int64_t>(pa_frame_size(&kForm));
    m_mark = {now - Seconds(micros * 1e-6) - lengthOf(unread), m_framesRead, now};
}

void PulseInputStream::lose(AudioInputError reason) {
    const bool isNews = !m_loss;
    m_loss = std::move(reason);
    if (m_isOpen && isNews) m_listener.soundLost(*m_loss);
    m_connection->wake();
}

void PulseInputStream::returned() {
    const bool isNews = m_loss.has_value();
    m_loss.reset();
    if (m_isOpen && isNews) m_listener.soundReturned();
    m_connection->wake();
}

} // namespace morvelin
