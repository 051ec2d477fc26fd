#include "media/FFmpegSoundReader.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <deque>
#include <numeric>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/core.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include "media/FFmpegHandles.h"
#include "media/FFmpegInput.h"
#include "media/SoundConversion.h"

namespace morvelin {

namespace {

using Kind = SoundReaderError::Kind;

/// A decoder needs what came before to be exact: some packets, for some codecs a tenth of a second.
constexpr Seconds kPreroll{0.3};
/// Further ahead a seek is cheaper than decoding.
constexpr Seconds kDecodedThrough{5};
/// Containers other than movies round times, or err where a codec's packets change their length: what is so close
/// follows on.
constexpr Seconds kJitter{0.03};
/// Samples; each time costs a move of those that are kept.
constexpr std::int64_t kForgottenAtOnce = kSoundRate / 2;
/// A demuxer that finds nothing to hold on to in so many tries has reached the end of what there is.
constexpr int kMostFaults = 256;

std::string_view formatOf(const AVFormatContext& input) { return input.iformat->name; }
/// QuickTime or MPEG-4, where every time is exact.
bool isMovie(const AVFormatContext& input) { return formatOf(input).starts_with("mov"); }
/// Where times are estimates, a sample's place is known only from the beginning on.
bool seeksAreExact(const AVFormatContext& input) { return formatOf(input) != "ogg" && formatOf(input) != "aac"; }

/// One file's track of sound, open for decoding.
struct OpenSound {
    InputHandle input;
    CodecHandle decoder;
    int stream = -1;
    SourceTime origin; ///< by the container's clock
    SoundSpan span;    ///< from `origin` on
};

CodecHandle openDecoder(const AVStream& stream) {
    return openedDecoder(stream, [](AVCodecContext& decoder) {
        decoder.thread_count = 1;
        decoder.err_recognition |= AV_EF_CRCCHECK | AV_EF_EXPLODE; // silence is better than noise
    });
}

/// Back at the beginning, with nothing known of what was read. False when the file has gone.
bool reopen(OpenSound& sound, const std::filesystem::path& path) {
    auto input = openInput(path);
    if (!input || static_cast<int>((*input)->nb_streams) <= sound.stream) return false;
    sound.input = std::move(*input);
    readOnly(*sound.input, sound.stream);
    sound.decoder = openDecoder(*sound.input->streams[sound.stream]);
    return sound.decoder != nullptr;
}

/// From this sample of a file on, how many there are until one falls together with one of ours. Starting there, a
/// change of rate gives the same samples wherever it starts.
std::int64_t samplesToCommonInstant(std::int64_t sample, int rate) {
    const std::int64_t period = rate / std::gcd(rate, kSoundRate);
    return (period - (sample % period + period) % period) % period;
}

/// Decoded sound in its place: interleaved samples from sample `start` on.
struct DecodedSound {
    std::int64_t start = 0;
    std::vector<float> samples;

    [[nodiscard]] std::int64_t end() const {
        return start + static_cast<std::int64_t>(samples.size()) / kSoundChannels;
    }
};

class FFmpegSoundReader final : public SoundReader {
public:
    FFmpegSoundReader(std::filesystem::path path, OpenSound sound, Log log)
        : m_path(std::move(path)),
          m_sound(std::move(sound)),
          m_log(std::move(log)),
          m_afterAll(soundSamples(m_sound.span.end.sinceZero() + kPreroll)) {}

    [[nodiscard]] SoundSpan span() const override { return m_sound.span; }
    void read(std::int64_t first, std::span<float> samples) override;

private:
    [[nodiscard]] std::int64_t decodedEnd() const { return m_decoded.empty() ? m_start : m_decoded.back().end(); }
    void seekTo(std::int64_t first);
    bool startDecodingAt(std::int64_t first);
    void startAnew(std::int64_t first);
    void forgetBefore(std::int64_t first);
    bool decodeMore();
    bool feedDecoder();
    void place(const AVFrame& frame);
    void endRun();
    void tellDamage();

    std::filesystem::path m_path;
    OpenSound m_sound;
    Log m_log;
    std::int64_t m_afterAll; ///< nothing is to be looked for from here on
    PacketHandle m_packet = newPacket();
    FrameHandle m_frame = newFrame();
    SoundConverter m_converter;
    std::deque<DecodedSound> m_decoded; ///< by time
    std::int64_t m_start = 0;           ///< what lies before needs a seek
    /// Of the frame that follows on, in the file's own samples; nothing when the next frame begins anew.
    std::optional<std::int64_t> m_nextSample;
    bool m_isAtEnd = false;
    bool m_toldDamage = false;
};

void FFmpegSoundReader::read(std::int64_t first, std::span<float> samples) {
    std::ranges::fill(samples, 0.0F);
    const std::int64_t end = first + static_cast<std::int64_t>(samples.size()) / kSoundChannels;
    const std::int64_t begin = std::max<std::int64_t>(first, 0);
    if (end <= 0 || begin >= m_afterAll) return;
    const bool liesFarAhead = !m_isAtEnd && seeksAreExact(*m_sound.input) &&
                              begin > decodedEnd() + soundSamples(kDecodedThrough);
    if (begin < m_start || liesFarAhead) seekTo(begin);
    m_start = begin;
    forgetBefore(begin);
    while (decodedEnd() < end && decodeMore()) forgetBefore(begin);
    for (const DecodedSound& run : m_decoded) {
        const std::int64_t from = std::max(run.start, begin);
        const std::int64_t to = std::min(run.end(), end);
        for (std::int64_t i = from * kSoundChannels; i < to * kSoundChannels; ++i) {
            const float sample = run.samples[static_cast<std::size_t>(i - run.start * kSoundChannels)];
            samples[static_cast<std::size_t>(i - first * kSoundChannels)] = std::isfinite(sample) ? sample : 0.0F;
        }
    }
}

/// Keeps the last run, even empty, for what follows on.
void FFmpegSoundReader::forgetBefore(std::int64_t first) {
    while (m_decoded.size() > 1 && m_decoded.front().end() <= first) m_decoded.pop_front();
    if (m_decoded.empty()) return;
    DecodedSound& run = m_decoded.front();
    const std::int64_t past = std::min(first, run.end()) - run.start;
    if (past < kForgottenAtOnce && run.end() > first) return;
    run.samples.erase(run.samples.begin(), run.samples.begin() + past * kSoundChannels);
    run.start += past;
}

void FFmpegSoundReader::seekTo(std::int64_t first) {
    const bool mayTry = seeksAreExact(*m_sound.input);
    if (mayTry && startDecodingAt(first - soundSamples(kPreroll)) && decodeMore() && m_decoded.front().start <= first)
        return;
    // A container without an index may land anywhere: then from its beginning, which only a new start gives as it was.
    startAnew(0);
    m_isAtEnd = !reopen(m_sound, m_path);
}

void FFmpegSoundReader::startAnew(std::int64_t first) {
    m_decoded.clear();
    m_start = first;
    m_nextSample.reset();
    m_converter.reset();
    m_isAtEnd = false;
}

bool FFmpegSoundReader::startDecodingAt(std::int64_t first) {
    const AVStream& stream = *m_sound.input->streams[m_sound.stream];
    const SourceTime time = m_sound.origin + Seconds(static_cast<double>(first) / kSoundRate);
    const auto ticks = static_cast<std::int64_t>(std::floor(time.value / av_q2d(stream.time_base)));
    startAnew(first);
    avcodec_flush_buffers(m_sound.decoder.get());
    const auto seek = [&](std::int64_t place) {
        return av_seek_frame(m_sound.input.get(), m_sound.stream, place, AVSEEK_FLAG_BACKWARD) >= 0;
    };
    if (seek(ticks)) return true;
    // Not all containers can be asked for a moment before their first packet.
    return stream.start_time != AV_NOPTS_VALUE && ticks < stream.start_time && seek(stream.start_time);
}

/// Decodes one more frame; false at the end of the file.
bool FFmpegSoundReader::decodeMore() {
    while (!m_isAtEnd) {
        const int code = avcodec_receive_frame(m_sound.decoder.get(), m_frame.get());
        if (code == AVERROR(EAGAIN)) {
            if (!feedDecoder()) avcodec_send_packet(m_sound.decoder.get(), nullptr);
            continue;
        }
        if (code == AVERROR_EOF) {
            endRun();
            m_isAtEnd = true;
        } else if (code < 0) {
            tellDamage();
        } else {
            place(*m_frame);
            av_frame_unref(m_frame.get());
            return true;
        }
    }
    return false;
}

/// Hands the decoder one more packet; false at the end of the file.
bool FFmpegSoundReader::feedDecoder() {
    for (int faults = 0; faults < kMostFaults;) {
        const int code = av_read_frame(m_sound.input.get(), m_packet.get());
        if (code == AVERROR_EOF) return false;
        if (code < 0) {
            tellDamage();
            ++faults;
            continue;
        }
        const bool isOurs = m_packet->stream_index == m_sound.stream;
        const int sent = isOurs ? avcodec_send_packet(m_sound.decoder.get(), m_packet.get()) : 0;
        av_packet_unref(m_packet.get());
        if (sent < 0) tellDamage();
        if (isOurs && sent >= 0) return true;
    }
    return false;
}

/// Puts a frame behind the one before, or where its time says.
void FFmpegSoundReader::place(const AVFrame& frame) {
    const AVStream& stream = *m_sound.input->streams[m_sound.stream];
    const std::int64_t time = frame.best_effort_timestamp;
    if (time == AV_NOPTS_VALUE && !m_nextSample) return; // it can't be told where this one belongs
    const double seconds = static_cast<double>(time) * av_q2d(stream.time_base) - m_sound.origin.value;
    const std::int64_t said = time != AV_NOPTS_VALUE ? std::llround(seconds * frame.sample_rate) : *m_nextSample;
    const Seconds tolerance = isMovie(*m_sound.input) ? Seconds(1.0 / frame.sample_rate) : kJitter;
    const auto jitter = static_cast<std::int64_t>(tolerance.value * frame.sample_rate);
    const bool followsOn = m_nextSample && std::abs(said - *m_nextSample) <= jitter;
    std::int64_t skipped = 0;
    if (!followsOn) {
        endRun();
        skipped = samplesToCommonInstant(said, frame.sample_rate);
        const std::int64_t first = said + skipped;
        m_decoded.push_back({std::llround(static_cast<double>(first) * kSoundRate / frame.sample_rate), {}});
    }
    if (skipped >= frame.nb_samples) return; // the next frame begins the run
    m_nextSample = (followsOn ? *m_nextSample : said) + frame.nb_samples;
    if (!m_converter.convert(frame, static_cast<int>(skipped), m_decoded.back().samples)) tellDamage();
}

void FFmpegSoundReader::endRun() {
    if (!m_decoded.empty()) m_converter.drain(m_decoded.back().samples);
    m_nextSample.reset();
}

void FFmpegSoundReader::tellDamage() {
    if (!m_log || std::exchange(m_toldDamage, true)) return;
    m_log(fmt::format("[SoundReader] The sound of “{}” is damaged near {:.2f} s. It is silent there.",
                      m_path.filename().string(), static_cast<double>(decodedEnd()) / kSoundRate));
}

/// A movie's sound has its place beside the pictures; a file of sound alone begins with its first sample.
bool keepsItsOwnZero(const AVFormatContext& input) { return isMovie(input) || formatOf(input).starts_with("matroska"); }

int indexOfTrack(const AVFormatContext& input, std::size_t track) {
    for (unsigned index = 0; index < input.nb_streams; ++index)
        if (input.streams[index]->codecpar->codec_type == AVMEDIA_TYPE_AUDIO && track-- == 0)
            return static_cast<int>(index);
    return -1;
}

/// The last moment of sound by the container's clock, as far as its packets tell. Reads the whole file.
std::int64_t endOfPackets(AVFormatContext& input, int stream) {
    std::int64_t end = 0;
    const PacketHandle packet = newPacket();
    while (av_read_frame(&input, packet.get()) >= 0) {
        if (packet->stream_index == stream && packet->pts != AV_NOPTS_VALUE)
            end = std::max(end, packet->pts + packet->duration);
        av_packet_unref(packet.get());
    }
    return end;
}

/// Where the sound ends: known to the index, or looked for in all the file.
std::int64_t endOfSound(AVFormatContext& input, int index) {
    const AVStream& stream = *input.streams[index];
    const std::int64_t start = stream.start_time != AV_NOPTS_VALUE ? stream.start_time : 0;
    if (isMovie(input) && stream.duration != AV_NOPTS_VALUE) return start + stream.duration;
    return endOfPackets(input, index);
}

Result<OpenSound, SoundReaderError> openSound(const std::filesystem::path& path, const std::string& name,
                                              std::size_t track) {
    const auto cannotOpen = [](std::string sentence) {
        return failure(SoundReaderError{Kind::CannotOpen, std::move(sentence)});
    };
    auto input = openInput(path);
    if (!input) return cannotOpen(input.error());
    OpenSound sound{std::move(*input), nullptr, -1, {}, {}};
    sound.stream = indexOfTrack(*sound.input, track);
    if (sound.stream < 0)
        return failure(SoundReaderError{Kind::NoSuchTrack,
                                        track == 0 ? fmt::format("“{}” has no sound.", name)
                                                   : fmt::format("“{}” has only {} tracks of sound.", name, track)});
    readOnly(*sound.input, sound.stream);
    readOnly(*sound.input, sound.stream);
    const AVStream& stream = *sound.input->streams[sound.stream];
    const double tick = av_q2d(stream.time_base);
    const double start = stream.start_time != AV_NOPTS_VALUE ? static_cast<double>(stream.start_time) * tick : 0;
    const double end = static_cast<double>(endOfSound(*sound.input, sound.stream)) * tick;
    if (!keepsItsOwnZero(*sound.input)) sound.origin = SourceTime(start);
    sound.span.start = SourceTime(std::max(0.0, start - sound.origin.value));
    sound.span.end = SourceTime(std::max(sound.span.start.value, end - sound.origin.value));
    const AVCodecID codec = stream.codecpar->codec_id;
    if (!reopen(sound, path))
        return cannotOpen(
            fmt::format("“{}” has sound in a form ({}) that can't be decoded.", name, avcodec_get_name(codec)));
    return sound;
}

} // namespace

Result<std::unique_ptr<SoundReader>, SoundReaderError> FFmpegSoundReaderFactory::open(const std::filesystem::path& path,
                                                                                      std::size_t track) {
    const std::string name = path.filename().string();
    auto sound = openSound(path, name, track);
    if (!sound) return passOn(std::move(sound));
    return std::make_unique<FFmpegSoundReader>(path, std::move(*sound), m_log);
}

} // namespace morvelin
