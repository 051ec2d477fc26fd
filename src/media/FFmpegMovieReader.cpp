#include "media/FFmpegMovieReader.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <fmt/core.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/display.h>
}

#include "media/FFmpegHandles.h"
#include "media/FFmpegInput.h"
#include "media/FrameConversion.h"
#include "media/MovieIndex.h"

namespace morvelin {

namespace {

using Kind = MovieReaderError::Kind;

/// A movie's video track, open for decoding, with its index.
struct OpenTrack {
    InputHandle input;
    CodecHandle decoder;
    int stream = -1;
    int quarterTurns = 0;
    bool hasAudio = false;
    MovieIndex index;
};

class FFmpegMovieReader final : public MovieReader {
public:
    FFmpegMovieReader(std::string name, OpenTrack track);

    [[nodiscard]] const MovieProperties& properties() const override { return m_properties; }
    Result<MovieFrame, MovieReaderError> frameAt(SourceTime time) override;

private:
    Result<FrameHandle, MovieReaderError> decode(std::int64_t number);
    Result<FrameHandle, MovieReaderError> decodeForwardTo(std::int64_t number);
    Result<FrameHandle, MovieReaderError> nextFrame();
    int feedDecoder();
    bool seekTo(std::int64_t keyFrame);
    [[nodiscard]] bool seekingIsQuicker(std::int64_t number) const;
    [[nodiscard]] std::unexpected<MovieReaderError> damagedNear(std::int64_t number);

    std::string m_name;
    OpenTrack m_track;
    FrameConverter m_converter;
    PacketHandle m_packet = newPacket();
    MovieProperties m_properties;
    MovieFrame m_current;
    /// The last frame that the decoder gave; nothing when it must be sent to a key frame first.
    std::optional<std::int64_t> m_decoded;
};

FFmpegMovieReader::FFmpegMovieReader(std::string name, OpenTrack track)
    : m_name(std::move(name)),
      m_track(std::move(track)),
      m_converter(m_track.quarterTurns) {
    const MovieIndex& index = m_track.index;
    m_properties = {.size = m_converter.shownSize({m_track.decoder->width, m_track.decoder->height}),
                    .start = index.startOf(0),
                    .end = index.endOf(index.count() - 1),
                    .nominalFrameRate = index.nominalFrameRate(),
                    .hasAudio = m_track.hasAudio};
}

Result<MovieFrame, MovieReaderError> FFmpegMovieReader::frameAt(SourceTime time) {
    const std::int64_t number = m_track.index.numberAt(time);
    if (number == m_current.number) return m_current;
    auto frame = decode(number);
    if (!frame) return passOn(std::move(frame));
    std::shared_ptr<const Picture> picture = m_converter.convert(std::move(*frame));
    if (picture == nullptr)
        return failure(MovieReaderError{Kind::DecodingFailed,
                                        fmt::format("“{}” has pixels of a kind that can't be shown.", m_name)});
    m_current = {std::move(picture), number, m_track.index.startOf(number), m_track.index.endOf(number)};
    return m_current;
}

Result<FrameHandle, MovieReaderError> FFmpegMovieReader::decode(std::int64_t number) {
    if (m_decoded && number > *m_decoded && !seekingIsQuicker(number)) return decodeForwardTo(number);
    // Some containers land behind the key frame that was asked for: then from an earlier one.
    std::int64_t keyFrame = m_track.index.keyFrameFor(number);
    while (true) {
        m_decoded.reset();
        if (!seekTo(keyFrame)) return damagedNear(number);
        auto frame = decodeForwardTo(number);
        if (frame || keyFrame == 0) return frame;
        if (m_decoded.value_or(-1) <= number) return frame;
        keyFrame = m_track.index.keyFrameFor(keyFrame - 1);
    }
}

/// A seek throws away what the decoder's threads are working on, so it must save more than that.
bool FFmpegMovieReader::seekingIsQuicker(std::int64_t number) const {
    return m_track.index.keyFrameFor(number) > *m_decoded + m_track.decoder->thread_count + 1;
}

Result<FrameHandle, MovieReaderError> FFmpegMovieReader::decodeForwardTo(std::int64_t number) {
    while (true) {
        auto frame = nextFrame();
        if (!frame || *frame == nullptr) {
            m_decoded.reset();
            return damagedNear(number);
        }
        const auto found = m_track.index.numberOf((*frame)->best_effort_timestamp);
        if (!found) continue; // cut away by the container's edit list
        m_decoded = found;
        if (*found == number) return frame;
        if (*found > number) return damagedNear(number);
    }
}

/// The decoder's next frame in order; a null handle at the end of the movie.
Result<FrameHandle, MovieReaderError> FFmpegMovieReader::nextFrame() {
    FrameHandle frame = newFrame();
    int code = avcodec_receive_frame(m_track.decoder.get(), frame.get());
    while (code == AVERROR(EAGAIN)) {
        code = feedDecoder();
        if (code >= 0) code = avcodec_receive_frame(m_track.decoder.get(), frame.get());
    }
    if (code == AVERROR_EOF) return FrameHandle();
    const bool isWhole = code >= 0 && frame->decode_error_flags == 0 && (frame->flags & AV_FRAME_FLAG_CORRUPT) == 0;
    if (!isWhole) return damagedNear(m_decoded.value_or(-1) + 1);
    return frame;
}

int FFmpegMovieReader::feedDecoder() {
    while (av_read_frame(m_track.input.get(), m_packet.get()) >= 0) {
        const bool isOurs = m_packet->stream_index == m_track.stream;
        const int code = isOurs ? avcodec_send_packet(m_track.decoder.get(), m_packet.get()) : 0;
        av_packet_unref(m_packet.get());
        if (isOurs) return code;
    }
    return avcodec_send_packet(m_track.decoder.get(), nullptr);
}

bool FFmpegMovieReader::seekTo(std::int64_t keyFrame) {
    avcodec_flush_buffers(m_track.decoder.get());
    const IndexedFrame& frame = m_track.index.frame(keyFrame);
    return av_seek_frame(m_track.input.get(), m_track.stream, frame.decodingTime, AVSEEK_FLAG_BACKWARD) >= 0;
}

std::unexpected<MovieReaderError> FFmpegMovieReader::damagedNear(std::int64_t number) {
    const std::int64_t known = std::clamp<std::int64_t>(number, 0, m_track.index.count() - 1);
    return failure(MovieReaderError{Kind::DecodingFailed, fmt::format("“{}” is damaged near {:.2f} s.", m_name,
                                                                      m_track.index.startOf(known).value)});
}

/// When the frame with the last packet ends. In fragments the demuxer leaves each packet's duration to a guess, but
/// knows the next frame, even when its bytes are cut off, or else the end of the track.
std::int64_t endOfLastFrame(AVFormatContext& input, AVStream& stream, const IndexedFrame& last,
                            std::int64_t packetDuration) {
    const bool isFragmented = std::string_view(input.iformat->name).starts_with("mov") && stream.nb_frames == 0;
    if (!isFragmented) return last.presentationTime + packetDuration;
    const int next = av_index_search_timestamp(&stream, last.decodingTime + 1, AVSEEK_FLAG_ANY);
    const std::int64_t end = next >= 0 ? avformat_index_get_entry(&stream, next)->timestamp : stream.duration;
    return end != AV_NOPTS_VALUE ? end : last.presentationTime + packetDuration;
}

/// Passes over all packets once, without decoding.
MovieIndex readIndex(AVFormatContext& input, AVStream& stream) {
    std::vector<IndexedFrame> frames;
    std::optional<IndexedFrame> last;
    std::int64_t lastDuration = 0;
    const PacketHandle packet = newPacket();
    while (av_read_frame(&input, packet.get()) >= 0) {
        const std::int64_t time = packet->pts != AV_NOPTS_VALUE ? packet->pts : packet->dts;
        const bool shows = packet->stream_index == stream.index && time != AV_NOPTS_VALUE &&
                           (packet->flags & AV_PKT_FLAG_DISCARD) == 0;
        if (shows) {
            const std::int64_t decodingTime = packet->dts != AV_NOPTS_VALUE ? packet->dts : time;
            frames.push_back({time, decodingTime, (packet->flags & AV_PKT_FLAG_KEY) != 0});
            if (!last || time > last->presentationTime) {
                last = frames.back();
                lastDuration = packet->duration;
            }
        }
        av_packet_unref(packet.get());
    }
    const std::int64_t end = last ? endOfLastFrame(input, stream, *last, lastDuration) : 0;
    return {std::move(frames), end, Seconds(av_q2d(stream.time_base))};
}

CodecHandle openDecoder(const AVStream& stream, int threads) {
    return openedDecoder(stream, [threads](AVCodecContext& decoder) {
        const int cores = std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
        decoder.thread_count = threads > 0 ? threads : cores;
        decoder.err_recognition |= AV_EF_EXPLODE; // a patched-up picture must not pass for the real one
    });
}

int quarterTurnsOf(const AVStream& stream) {
    std::size_t size = 0;
    const std::uint8_t* matrix = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &size);
    if (matrix == nullptr || size < 9 * sizeof(std::int32_t)) return 0;
    const double counterclockwise = av_display_rotation_get(reinterpret_cast<const std::int32_t*>(matrix));
    if (std::isnan(counterclockwise)) return 0;
    return static_cast<int>(std::lround(-counterclockwise / 90) % 4 + 4) % 4;
}

bool hasAudioTrack(const AVFormatContext& input) {
    for (unsigned index = 0; index < input.nb_streams; ++index)
        if (input.streams[index]->codecpar->codec_type == AVMEDIA_TYPE_AUDIO) return true;
    return false;
}

Result<OpenTrack, MovieReaderError> openTrack(const std::filesystem::path& path, const std::string& name, int threads) {
    auto input = openInput(path);
    if (!input) return failure(MovieReaderError{Kind::CannotOpen, input.error()});
    AVFormatContext& context = **input;
    const int best = av_find_best_stream(&context, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (best < 0) return failure(MovieReaderError{Kind::NoVideoTrack, fmt::format("“{}” has no video track.", name)});
    readOnly(context, best);

    AVStream& stream = *context.streams[best];
    OpenTrack track;
    track.decoder = openDecoder(stream, threads);
    track.stream = best;
    track.quarterTurns = quarterTurnsOf(stream);
    track.hasAudio = hasAudioTrack(context);
    if (track.decoder == nullptr)
        return failure(
            MovieReaderError{Kind::CannotOpen, fmt::format("“{}” has video in a form ({}) that can't be decoded.", name,
                                                           avcodec_get_name(stream.codecpar->codec_id))});
    track.index = readIndex(context, stream);
    if (track.index.isEmpty() || track.decoder->width < 2 || track.decoder->height < 2)
        return failure(MovieReaderError{Kind::CannotOpen, fmt::format("“{}” holds no whole frame.", name)});
    track.input = std::move(*input);
    return track;
}

} // namespace

Result<std::unique_ptr<MovieReader>, MovieReaderError> FFmpegMovieReaderFactory::open(
    const std::filesystem::path& path) {
    const std::string name = path.filename().string();
    auto track = openTrack(path, name, m_options.threads);
    if (!track) return passOn(std::move(track));
    return std::make_unique<FFmpegMovieReader>(name, std::move(*track));
}

} // namespace morvelin
