#include "media/FFmpegHandles.h"

#include <array>
#include <new>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

namespace morvelin {

void FreeFFmpeg::operator()(AVBufferRef* buffer) const { av_buffer_unref(&buffer); }
void FreeFFmpeg::operator()(AVCodecContext* codec) const { avcodec_free_context(&codec); }
void FreeFFmpeg::operator()(AVFrame* frame) const { av_frame_free(&frame); }
void FreeFFmpeg::operator()(AVPacket* packet) const { av_packet_free(&packet); }
void FreeFFmpeg::operator()(SwrContext* resampler) const { swr_free(&resampler); }
void FreeFFmpeg::operator()(SwsContext* scaler) const { sws_freeContext(scaler); }

void FreeFFmpeg::operator()(AVIOContext* io) const {
    av_freep(static_cast<void*>(&io->buffer)); // the buffer may have been replaced since it was handed over
    avio_context_free(&io);
}

void CloseInput::operator()(AVFormatContext* input) const { avformat_close_input(&input); }
void FreeOutput::operator()(AVFormatContext* output) const { avformat_free_context(output); }

PacketHandle newPacket() {
    PacketHandle packet(av_packet_alloc());
    if (packet == nullptr) throw std::bad_alloc();
    return packet;
}

FrameHandle newFrame() {
    FrameHandle frame(av_frame_alloc());
    if (frame == nullptr) throw std::bad_alloc();
    return frame;
}

CodecHandle openedDecoder(const AVStream& stream, const std::function<void(AVCodecContext& decoder)>& configure) {
    const AVCodec* codec = avcodec_find_decoder(stream.codecpar->codec_id);
    if (codec == nullptr) return nullptr;
    CodecHandle decoder(avcodec_alloc_context3(codec));
    if (decoder == nullptr) throw std::bad_alloc();
    if (avcodec_parameters_to_context(decoder.get(), stream.codecpar) < 0) return nullptr;
    decoder->pkt_timebase = stream.time_base;
    configure(*decoder);
    return avcodec_open2(decoder.get(), codec, nullptr) < 0 ? nullptr : std::move(decoder);
}

void keepFFmpegQuiet() { av_log_set_level(AV_LOG_QUIET); }

std::string ffmpegReason(int code) {
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(code, text.data(), text.size());
    return text.data();
}

} // namespace morvelin
