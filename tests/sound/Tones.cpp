#include "sound/Tones.h"

#include <cmath>
#include <csignal>
#include <numbers>
#include <optional>

#include <fcntl.h>
#include <pulse/pulseaudio.h>
#include <sys/stat.h>

#include "core/base/OwnedDescriptor.h"

namespace morvelin {

namespace {

constexpr double kRate = 44'100;
constexpr pa_sample_spec kForm{PA_SAMPLE_FLOAT32NE, 44'100, 1};

} // namespace

void Tones::add(HostTime moment) {
    const std::lock_guard lock(m_mutex);
    m_moments.push_back(moment);
}

float Tones::at(HostTime time) const {
    const std::lock_guard lock(m_mutex);
    for (const HostTime moment : m_moments) {
        const Seconds t = time - moment;
        if (t >= 0_s && t < kLength)
            return static_cast<float>(0.5 * std::sin(2 * std::numbers::pi * m_frequency * t.value));
    }
    return 0;
}

// ------------------------------------------------------------------------------------------- to an output

struct TonePlayer::State {
    Tones tones;
    std::string sink;
    pa_threaded_mainloop* loop = pa_threaded_mainloop_new();
    pa_context* context = nullptr;
    pa_stream* stream = nullptr;
    bool isPlaying = false;
    bool hasFailed = false;

    void contextChanged() {
        const auto state = pa_context_get_state(context);
        hasFailed = hasFailed || !PA_CONTEXT_IS_GOOD(state);
        if (state == PA_CONTEXT_READY) open();
        pa_threaded_mainloop_signal(loop, 0);
    }

    void open() {
        stream = pa_stream_new(context, "Tones", &kForm, nullptr);
        const auto changed = [](pa_stream* changedStream, void* self) {
            auto& player = *static_cast<State*>(self);
            const auto state = pa_stream_get_state(changedStream);
            player.isPlaying = state == PA_STREAM_READY;
            player.hasFailed = player.hasFailed || !PA_STREAM_IS_GOOD(state);
            pa_threaded_mainloop_signal(player.loop, 0);
        };
        const auto writable = [](pa_stream*, std::size_t bytes, void* self) {
            static_cast<State*>(self)->write(bytes);
        };
        pa_stream_set_state_callback(stream, changed, this);
        pa_stream_set_write_callback(stream, writable, this);
        constexpr auto kAny = static_cast<std::uint32_t>(-1);
        const pa_buffer_attr buffer{kAny, static_cast<std::uint32_t>(0.1 * kRate) * 4, kAny, kAny, kAny};
        constexpr auto kFlags = static_cast<pa_stream_flags_t>(PA_STREAM_ADJUST_LATENCY | PA_STREAM_AUTO_TIMING_UPDATE |
                                                               PA_STREAM_INTERPOLATE_TIMING);
        pa_stream_connect_playback(stream, sink.c_str(), &buffer, kFlags, nullptr, nullptr);
    }

    /// When the next sample to be written will be heard.
    [[nodiscard]] std::optional<HostTime> writeTime() const {
        pa_usec_t ahead = 0;
        int isNegative = 0;
        if (pa_stream_get_latency(stream, &ahead, &isNegative) < 0) return std::nullopt;
        return SystemClock().uptime() + Seconds((isNegative != 0 ? -1e-6 : 1e-6) * static_cast<double>(ahead));
    }

    void write(std::size_t bytes) {
        std::vector<float> samples(bytes / sizeof(float), 0);
        if (const auto time = writeTime())
            for (std::size_t sample = 0; sample < samples.size(); ++sample)
                samples[sample] = tones.at(*time + Seconds(static_cast<double>(sample) / kRate));
        pa_stream_write(stream, samples.data(), bytes, nullptr, 0, PA_SEEK_RELATIVE);
    }
};

TonePlayer::TonePlayer(const std::string& server, const std::string& sink, double frequency)
    : m_state(new State{.tones = Tones(frequency), .sink = sink}) {
    State& state = *m_state;
    state.context = pa_context_new(pa_threaded_mainloop_get_api(state.loop), "TonePlayer");
    const auto changed = [](pa_context*, void* self) { static_cast<State*>(self)->contextChanged(); };
    pa_context_set_state_callback(state.context, changed, &state);
    pa_threaded_mainloop_lock(state.loop);
    pa_context_connect(state.context, server.c_str(), PA_CONTEXT_NOAUTOSPAWN, nullptr);
    pa_threaded_mainloop_start(state.loop);
    while (!state.isPlaying && !state.hasFailed) pa_threaded_mainloop_wait(state.loop);
    pa_threaded_mainloop_unlock(state.loop);
}

TonePlayer::~TonePlayer() {
    State& state = *m_state;
    pa_threaded_mainloop_stop(state.loop);
    if (state.stream != nullptr) {
        pa_stream_set_state_callback(state.stream, nullptr, nullptr);
        pa_stream_disconnect(state.stream);
        pa_stream_unref(state.stream);
    }
    pa_context_set_state_callback(state.context, nullptr, nullptr);
    pa_context_disconnect(state.context);
    pa_context_unref(state.context);
    pa_threaded_mainloop_free(state.loop);
}

void TonePlayer::playAt(HostTime moment) { m_state->tones.add(moment); }

// ------------------------------------------------------------------------------------------- into a microphone

ToneSpeaker::ToneSpeaker(const std::string& pipe, double frequency, double drift)
    : m_tones(frequency),
      m_thread([=, this](const std::stop_token& stop) { speak(stop, pipe, drift); }) {}

namespace {

/// A server that starts again makes another pipe of that name.
bool isPipe(const OwnedDescriptor& descriptor, const std::string& path) {
    struct stat open {};
    struct stat named {};
    return fstat(descriptor.get(), &open) == 0 && stat(path.c_str(), &named) == 0 && open.st_ino == named.st_ino;
}

} // namespace

/// What nobody takes, as while the server is away, is gone.
void ToneSpeaker::speak(const std::stop_token& stop, const std::string& pipe, double drift) {
    sigset_t brokenPipe;
    sigemptyset(&brokenPipe);
    sigaddset(&brokenPipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &brokenPipe, nullptr);
    OwnedDescriptor output;
    const SystemClock clock;
    const double rate = kRate * (1 + drift);
    const HostTime start = clock.uptime();
    std::int64_t said = 0;
    std::vector<float> samples;
    while (!stop.stop_requested()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(4));
        const auto due = static_cast<std::int64_t>((clock.uptime() - start).value * rate);
        samples.clear();
        for (; said < due; ++said) samples.push_back(m_tones.at(start + Seconds(static_cast<double>(said) / rate)));
        if (!isPipe(output, pipe)) output = OwnedDescriptor(open(pipe.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
        (void)!write(output.get(), samples.data(), samples.size() * sizeof(float));
    }
}

} // namespace morvelin
