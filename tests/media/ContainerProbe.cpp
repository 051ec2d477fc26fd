#include "media/ContainerProbe.h"

#include <cmath>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>

#include <gtest/gtest.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/display.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

#include "media/FFmpegHandles.h"

namespace morvelin {

namespace {

std::string text(const char* name) { return name == nullptr ? "" : name; }

FrameHandle frameOf(const Picture& picture, AVPixelFormat format, int number) {
    FrameHandle frame = newFrame();
    frame->format = format;
    frame->width = picture.size().width;
    frame->height = picture.size().height;
    frame->pts = number;
    EXPECT_GE(av_frame_get_buffer(frame.get(), 0), 0);
    const int depth = av_pix_fmt_desc_get(format)->comp[0].depth;
    for (int index = 0; index < 3; ++index) {
        const auto plane = picture.plane(index);
        for (int y = 0; y < plane.height; ++y) {
            std::uint8_t* row = frame->data[index] + static_cast<std::ptrdiff_t>(y) * frame->linesize[index];
            for (int x = 0; x < plane.width; ++x) {
                if (depth == 8) {
                    row[x] = plane.row(y)[x];
                    continue;
                }
                const auto sample = static_cast<std::uint16_t>(plane.row(y)[x] << (depth - 8));
                std::memcpy(row + 2 * x, &sample, sizeof sample);
            }
        }
    }
    return frame;
}

CodecHandle openForeignEncoder(const ForeignMovie& movie, PixelSize size) {
    const AVCodec* encoder = avcodec_find_encoder_by_name("libx264");
    CodecHandle codec(avcodec_alloc_context3(encoder));
    codec->width = size.width;
    codec->height = size.height;
    codec->pix_fmt = av_get_pix_fmt(movie.pixelFormat);
    codec->time_base = {1, 25};
    codec->framerate = {25, 1};
    codec->gop_size = 12;
    codec->max_b_frames = movie.bFrames;
    codec->colorspace = static_cast<AVColorSpace>(av_color_space_from_name(movie.matrix));
    codec->color_range = movie.isFullRange ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
    codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    codec->thread_count = 1;
    av_opt_set(codec->priv_data, "preset", "veryfast", 0);
    av_opt_set(codec->priv_data, "qp", "10", 0);
    EXPECT_GE(avcodec_open2(codec.get(), encoder, nullptr), 0);
    return codec;
}

void writeReadyPackets(AVCodecContext& codec, AVFormatContext& output) {
    const PacketHandle packet = newPacket();
    while (avcodec_receive_packet(&codec, packet.get()) >= 0) {
        packet->duration = 1;
        av_packet_rescale_ts(packet.get(), codec.time_base, output.streams[0]->time_base);
        EXPECT_GE(av_write_frame(&output, packet.get()), 0);
        av_packet_unref(packet.get());
    }
}

} // namespace

ProbedMovie probe(const std::filesystem::path& path) {
    ProbedMovie movie;
    AVFormatContext* context = nullptr;
    EXPECT_GE(avformat_open_input(&context, path.c_str(), nullptr, nullptr), 0) << path;
    if (context == nullptr) return movie;
    const InputHandle input(context);
    const AVStream& stream = *context->streams[0];
    movie.primaries = text(av_color_primaries_name(stream.codecpar->color_primaries));
    movie.transfer = text(av_color_transfer_name(stream.codecpar->color_trc));
    movie.matrix = text(av_color_space_name(stream.codecpar->color_space));
    const PacketHandle packet = newPacket();
    while (av_read_frame(context, packet.get()) >= 0) {
        const double tick = av_q2d(stream.time_base);
        if (packet->stream_index == stream.index)
            movie.packets.push_back({static_cast<double>(packet->pts) * tick,
                                     static_cast<double>(packet->duration) * tick, packet->pos,
                                     (packet->flags & AV_PKT_FLAG_KEY) != 0});
        av_packet_unref(packet.get());
    }
    AVFormatContext* again = nullptr;
    avformat_open_input(&again, path.c_str(), nullptr, nullptr);
    const InputHandle inputAgain(again);
    avformat_find_stream_info(again, nullptr);
    movie.range = text(av_color_range_name(again->streams[0]->codecpar->color_range));
    movie.profile = again->streams[0]->codecpar->profile;
    return movie;
}

namespace {

std::uint32_t numberAt(const std::string& bytes, std::size_t offset) {
    std::uint32_t number = 0;
    for (std::size_t index = 0; index < 4; ++index)
        number = number << 8 | static_cast<std::uint8_t>(bytes.at(offset + index));
    return number;
}

/// Visits all boxes of the fragments, inner ones too.
void visitBoxes(const std::string& bytes, std::size_t begin, std::size_t end,
                const std::function<void(const std::string& type, std::size_t content)>& visit) {
    while (begin + 8 <= end) {
        const std::size_t size = numberAt(bytes, begin);
        ASSERT_GE(size, 8u);
        const std::string type = bytes.substr(begin + 4, 4);
        visit(type, begin + 8);
        if (type == "moof" || type == "traf") visitBoxes(bytes, begin + 8, begin + size, visit);
        begin += size;
    }
}

} // namespace

std::vector<std::uint32_t> fragmentDurations(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    std::vector<std::uint32_t> durations;
    std::uint32_t shared = 0;
    visitBoxes(bytes, 0, bytes.size(), [&](const std::string& type, std::size_t content) {
        if (type == "tfhd") shared = numberAt(bytes, content + 8); // FFmpeg writes it right behind the track's number
        if (type != "trun") return;
        const std::uint32_t flags = numberAt(bytes, content);
        const std::uint32_t count = numberAt(bytes, content + 4);
        std::size_t offset = content + 8 + ((flags & 1) != 0 ? 4 : 0) + ((flags & 4) != 0 ? 4 : 0);
        for (std::uint32_t frame = 0; frame < count; ++frame) {
            durations.push_back((flags & 0x100) != 0 ? numberAt(bytes, offset) : shared);
            for (const std::uint32_t field : {0x100u, 0x200u, 0x400u, 0x800u}) offset += (flags & field) != 0 ? 4 : 0;
        }
    });
    return durations;
}

std::vector<float> decodedSound(const std::filesystem::path& path, int track) {
    AVFormatContext* context = nullptr;
    EXPECT_GE(avformat_open_input(&context, path.c_str(), nullptr, nullptr), 0) << path;
    if (context == nullptr) return {};
    const InputHandle input(context);
    EXPECT_GE(avformat_find_stream_info(context, nullptr), 0);
    const AVStream* stream = nullptr;
    for (unsigned index = 0; index < context->nb_streams; ++index)
        if (context->streams[index]->codecpar->codec_type == AVMEDIA_TYPE_AUDIO && track-- == 0)
            stream = context->streams[index];
    EXPECT_NE(stream, nullptr) << "no such track";
    if (stream == nullptr) return {};
    const CodecHandle decoder = openedDecoder(*stream, [](AVCodecContext&) {});
    const double tick = av_q2d(stream->time_base);
    const PacketHandle packet = newPacket();
    const FrameHandle frame = newFrame();
    std::vector<float> samples;
    const auto receive = [&] {
        while (avcodec_receive_frame(decoder.get(), frame.get()) >= 0) {
            const std::int64_t start = std::llround(static_cast<double>(frame->pts) * tick * frame->sample_rate);
            const auto* plane = reinterpret_cast<const float*>(frame->extended_data[0]);
            for (std::int64_t i = 0; i < frame->nb_samples; ++i) {
                if (start + i < 0) continue;
                const auto place = static_cast<std::size_t>(start + i);
                if (place >= samples.size()) samples.resize(place + 1);
                samples[place] = plane[i];
            }
        }
    };
    while (av_read_frame(context, packet.get()) >= 0) {
        if (packet->stream_index == stream->index) {
            avcodec_send_packet(decoder.get(), packet.get());
            receive();
        }
        av_packet_unref(packet.get());
    }
    avcodec_send_packet(decoder.get(), nullptr);
    receive();
    return samples;
}

void writeForeignMovie(const std::filesystem::path& path, const ForeignMovie& movie,
                       const std::vector<Picture>& pictures) {
    keepFFmpegQuiet();
    const CodecHandle codec = openForeignEncoder(movie, pictures.front().size());
    AVFormatContext* context = nullptr;
    ASSERT_GE(avformat_alloc_output_context2(&context, nullptr, movie.container, path.c_str()), 0);
    const OutputHandle output(context);
    AVStream* stream = avformat_new_stream(context, nullptr);
    avcodec_parameters_from_context(stream->codecpar, codec.get());
    stream->time_base = codec->time_base;
    if (movie.quarterTurns != 0) {
        auto* matrix = reinterpret_cast<std::int32_t*>(
            av_stream_new_side_data(stream, AV_PKT_DATA_DISPLAYMATRIX, 9 * sizeof(std::int32_t)));
        av_display_rotation_set(matrix, 90.0 * movie.quarterTurns);
    }
    ASSERT_GE(avio_open(&context->pb, path.c_str(), AVIO_FLAG_WRITE), 0);
    ASSERT_GE(avformat_write_header(context, nullptr), 0);
    for (std::size_t number = 0; number < pictures.size(); ++number) {
        const FrameHandle frame = frameOf(pictures[number], codec->pix_fmt, static_cast<int>(number));
        ASSERT_GE(avcodec_send_frame(codec.get(), frame.get()), 0);
        writeReadyPackets(*codec, *context);
    }
    avcodec_send_frame(codec.get(), nullptr);
    writeReadyPackets(*codec, *context);
    ASSERT_GE(av_write_trailer(context), 0);
    avio_closep(&context->pb);
}

} // namespace morvelin
