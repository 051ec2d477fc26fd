// The FFmpeg objects that this folder owns, each as a move-only handle that frees itself.
#pragma once

#include <functional>
#include <memory>
#include <string>

struct AVBufferRef;
struct AVCodecContext;
struct AVFormatContext;
struct AVFrame;
struct AVIOContext;
struct AVPacket;
struct AVStream;
struct SwrContext;
struct SwsContext;

namespace morvelin {

struct FreeFFmpeg {
    void operator()(AVBufferRef* buffer) const;
    void operator()(AVCodecContext* codec) const;
    void operator()(AVFrame* frame) const;
    void operator()(AVIOContext* io) const;
    void operator()(AVPacket* packet) const;
    void operator()(SwrContext* resampler) const;
    void operator()(SwsContext* scaler) const;
};

struct CloseInput {
    void operator()(AVFormatContext* input) const;
};
struct FreeOutput {
    void operator()(AVFormatContext* output) const;
};

using BufferHandle = std::unique_ptr<AVBufferRef, FreeFFmpeg>;
using CodecHandle = std::unique_ptr<AVCodecContext, FreeFFmpeg>;
using FrameHandle = std::unique_ptr<AVFrame, FreeFFmpeg>;
using IOHandle = std::unique_ptr<AVIOContext, FreeFFmpeg>;
using PacketHandle = std::unique_ptr<AVPacket, FreeFFmpeg>;
using ResamplerHandle = std::unique_ptr<SwrContext, FreeFFmpeg>;
using ScalerHandle = std::unique_ptr<SwsContext, FreeFFmpeg>;
using InputHandle = std::unique_ptr<AVFormatContext, CloseInput>;
using OutputHandle = std::unique_ptr<AVFormatContext, FreeOutput>;

/// Memory that ran out is no error that anybody could handle: these throw `std::bad_alloc`.
[[nodiscard]] PacketHandle newPacket();
[[nodiscard]] FrameHandle newFrame();

/// A decoder for a stream, opened after `configure` has set what it likes; null where none opens.
[[nodiscard]] CodecHandle openedDecoder(const AVStream& stream,
                                        const std::function<void(AVCodecContext& decoder)>& configure);

/// FFmpeg's own log would go to standard error; what matters comes back as errors.
void keepFFmpegQuiet();

/// What FFmpeg says of one of its error codes, without a full stop.
[[nodiscard]] std::string ffmpegReason(int code);

} // namespace morvelin
