#include "capture/SoundRecorder.h"

#include <fmt/format.h>

namespace morvelin {

namespace {

/// Sound is written so much later than it was heard: by then it has come, and so has the word of a pause before it.
constexpr Seconds kDelay{0.15};
/// At the end of a take, how long the last sound may be in coming.
constexpr Seconds kLastPatience{0.5};

template <class... Handlers>
struct Overloaded : Handlers... {
    using Handlers::operator()...;
};

} // namespace

Result<std::unique_ptr<SoundRecorder>, AudioInputError> SoundRecorder::open(AudioInputSource& source,
                                                                            const SoundChoice& choice, Tell tell,
                                                                            Log log) {
    std::unique_ptr<SoundRecorder> recorder(new SoundRecorder(std::move(tell), std::move(log)));
    if (choice.systemAudio)
        if (auto added = recorder->add(source, SystemAudio{}, "system audio", "system audio"); !added)
            return passOn(std::move(added));
    if (choice.microphone)
        if (auto added = recorder->add(source, Microphone{*choice.microphone}, "microphone", "mic"); !added)
            return passOn(std::move(added));
    return recorder;
}

Result<void, AudioInputError> SoundRecorder::add(AudioInputSource& source, const AudioInputTarget& target,
                                                 std::string name, std::string logName) {
    auto input = std::make_unique<Input>();
    input->name = std::move(name);
    input->logName = std::move(logName);
    auto stream = source.open(target, input->inbox);
    if (!stream) return passOn(std::move(stream));
    input->stream = std::move(*stream);
    m_inputs.push_back(std::move(input));
    return {};
}

std::vector<SoundTrackSettings> SoundRecorder::trackSettings() const {
    return std::vector<SoundTrackSettings>(m_inputs.size());
}

void SoundRecorder::begin(HostTime firstFrameTime) {
    for (const auto& input : m_inputs) {
        input->track.emplace(firstFrameTime);
        input->lastNews = firstFrameTime;
    }
}

void SoundRecorder::pause(HostTime time) {
    for (const auto& input : m_inputs) input->track->pause(time);
}

void SoundRecorder::resume(HostTime time) {
    for (const auto& input : m_inputs) input->track->resume(time);
}

Result<bool, MovieWriterError> SoundRecorder::write(HostTime now, MovieWriter& writer) {
    bool wrote = false;
    for (std::size_t track = 0; track < m_inputs.size(); ++track) {
        Input& input = *m_inputs[track];
        read(input, now);
        mindStall(input, now);
        // Sound that is merely late shall not find silence in its place.
        input.track->fillTo(now - (input.isLost ? kDelay : kStall));
        auto written = writeTo(now - kDelay, track, writer);
        if (!written) return written;
        wrote = wrote || *written;
    }
    return wrote;
}

void SoundRecorder::read(Input& input, HostTime now) {
    const auto handle = Overloaded{[&](const SoundInbox::Chunk& chunk) {
                                       input.track->add({chunk.time, chunk.samples, chunk.followsGap});
                                       if (std::exchange(input.hasStalled, false))
                                           m_tell(fmt::format("The {} can be heard again.", input.name));
                                   },
                                   [&](const SoundInbox::Lost& lost) {
                                       if (!std::exchange(input.isLost, true))
                                           m_tell(fmt::format("The {} is lost, and silence recorded in its place: {}",
                                                              input.name, lost.reason.description()));
                                   },
                                   [&](const SoundInbox::Returned&) {
                                       if (std::exchange(input.isLost, false))
                                           m_tell(fmt::format("The {} is back.", input.name));
                                   }};
    for (const SoundInbox::Message& message : input.inbox.take()) {
        std::visit(handle, message);
        input.lastNews = now;
    }
}

void SoundRecorder::mindStall(Input& input, HostTime now) {
    if (input.isLost || now - input.lastNews < kStall) return;
    if (!std::exchange(input.hasStalled, true))
        m_tell(fmt::format("The {} has given no sound for {:.0f} s and is started anew; silence is recorded meanwhile.",
                           input.name, kStall.value));
    input.lastNews = now;
    input.stream->reopen();
}

Result<bool, MovieWriterError> SoundRecorder::writeTo(HostTime time, std::size_t track, MovieWriter& writer) {
    m_samples.clear();
    m_inputs[track]->track->takeTo(time, m_samples);
    if (m_samples.empty()) return false;
    if (auto written = writer.appendSound(track, m_samples); !written) {
        m_log(fmt::format("[CaptureEngine] Failed to append {} sample", m_inputs[track]->logName));
        return passOn(std::move(written));
    }
    return true;
}

Result<void, MovieWriterError> SoundRecorder::finish(HostTime end, Seconds movieDuration, MovieWriter& writer) {
    for (std::size_t index = 0; index < m_inputs.size(); ++index) {
        Input& input = *m_inputs[index];
        SoundTrack& track = *input.track;
        track.pause(end);
        const auto limit = std::chrono::steady_clock::now() + std::chrono::duration<double>(kLastPatience.value);
        const auto isExpected = [&] { return !track.hasAllTo(end) && !input.isLost && !input.hasStalled; };
        for (read(input, end); isExpected() && std::chrono::steady_clock::now() < limit; read(input, end))
            input.inbox.wait(kLastPatience);
        track.fillTo(end);
        if (auto written = writeTo(end, index, writer); !written) return passOn(std::move(written));

        const std::int64_t missing = soundSamples(movieDuration) - track.length();
        if (missing <= 0) continue;
        m_samples.assign(static_cast<std::size_t>(missing * kSoundChannels), 0);
        if (auto written = writer.appendSound(index, m_samples); !written) return written;
    }
    return {};
}

} // namespace morvelin
