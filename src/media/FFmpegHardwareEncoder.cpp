#include "media/FFmpegHardwareEncoder.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include <fmt/core.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/hwcontext.h>
#include <libavutil/opt.h>
}

namespace morvelin {

namespace {

namespace fs = std::filesystem;

constexpr AVPixelFormat kUploadFormat = AV_PIX_FMT_NV12; // what all of them take

/// An encoder that may be there, and what it must be told to answer each frame at once.
struct Candidate {
    const char* codec; ///< as FFmpeg calls it
    fs::path device;   ///< empty: the encoder finds its device by itself
    std::vector<std::pair<const char*, const char*>> options;
};

std::vector<fs::path> renderNodes() {
    std::vector<fs::path> nodes;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator("/dev/dri", error))
        if (entry.path().filename().string().starts_with("renderD")) nodes.push_back(entry.path());
    std::ranges::sort(nodes);
    return nodes;
}

std::vector<Candidate> candidates() {
    std::vector<Candidate> found;
    std::error_code error;
    if (fs::exists("/dev/nvidiactl", error))
        found.push_back(
            {"h264_nvenc",
             {},
             {{"preset", "p3"}, {"tune", "ull"}, {"zerolatency", "1"}, {"delay", "0"}, {"forced-idr", "1"}}});
    const std::vector<fs::path> nodes = renderNodes();
    for (const fs::path& node : nodes) found.push_back({"h264_vaapi", node, {{"async_depth", "1"}}});
    if (!nodes.empty()) found.push_back({"h264_qsv", {}, {{"async_depth", "1"}, {"forced_idr", "1"}}});
    return found;
}

std::string nameOf(const Candidate& candidate) {
    if (candidate.device.empty()) return candidate.codec;
    return fmt::format("{}@{}", candidate.codec, candidate.device.string());
}

void setStream(AVCodecContext& codec, const VideoEncoderSettings& settings) {
    const Rational tick = settings.timeBase();
    const Rational rate = exactFrameRate(settings.frameRate);
    codec.width = settings.size.width;
    codec.height = settings.size.height;
    codec.pix_fmt = kUploadFormat;
    codec.time_base = {tick.numerator, tick.denominator};
    codec.framerate = {rate.numerator, rate.denominator};
    codec.bit_rate = settings.bitRate;
    codec.gop_size = std::max(1, static_cast<int>(std::lround(settings.keyFrameInterval.value * rate.value())));
    codec.max_b_frames = 0;
    codec.profile = FF_PROFILE_H264_HIGH;
    codec.flags |= AV_CODEC_FLAG_GLOBAL_HEADER | AV_CODEC_FLAG_LOW_DELAY;
    codec.color_range = AVCOL_RANGE_MPEG;
    codec.color_primaries = AVCOL_PRI_BT709;
    codec.colorspace = AVCOL_SPC_BT709;
    codec.color_trc = settings.transfer == MovieSettings::Transfer::SRGB ? AVCOL_TRC_IEC61966_2_1 : AVCOL_TRC_BT709;
}

/// Frames on a VA-API device; nothing when it can't be opened.
BufferHandle deviceFrames(const fs::path& node, PixelSize size) {
    AVBufferRef* device = nullptr;
    if (av_hwdevice_ctx_create(&device, AV_HWDEVICE_TYPE_VAAPI, node.c_str(), nullptr, 0) < 0) return nullptr;
    const BufferHandle ownedDevice(device);
    BufferHandle frames(av_hwframe_ctx_alloc(device));
    if (frames == nullptr) return nullptr;
    auto* pool = reinterpret_cast<AVHWFramesContext*>(frames->data);
    pool->format = AV_PIX_FMT_VAAPI;
    pool->sw_format = kUploadFormat;
    pool->width = size.width;
    pool->height = size.height;
    pool->initial_pool_size = 8;
    return av_hwframe_ctx_init(frames.get()) < 0 ? nullptr : std::move(frames);
}

/// 4:2:0 planes to one plane of luma and one of Cb and Cr in turn.
void interleave(const Picture& picture, AVFrame& target) {
    const auto luma = picture.plane(0);
    for (int y = 0; y < luma.height; ++y)
        std::copy_n(luma.row(y), luma.width, target.data[0] + static_cast<std::ptrdiff_t>(y) * target.linesize[0]);
    const auto cb = picture.plane(1);
    const auto cr = picture.plane(2);
    for (int y = 0; y < cb.height; ++y) {
        std::uint8_t* row = target.data[1] + static_cast<std::ptrdiff_t>(y) * target.linesize[1];
        for (int x = 0; x < cb.width; ++x) {
            row[2 * x] = cb.row(y)[x];
            row[2 * x + 1] = cr.row(y)[x];
        }
    }
}

} // namespace

FFmpegHardwareEncoder::FFmpegHardwareEncoder(CodecHandle codec, BufferHandle frames,
                                             const VideoEncoderSettings& settings)
    : m_codec(std::move(codec)),
      m_deviceFrames(std::move(frames)),
      m_size(settings.size),
      m_keyFrameTicks(std::llround(settings.keyFrameInterval.value / settings.timeBase().value())),
      m_packet(newPacket()) {}

std::vector<std::string> hardwareEncoders() {
    std::vector<std::string> names;
    for (const Candidate& candidate : candidates()) names.push_back(nameOf(candidate));
    return names;
}

bool canEncode(const std::string& hardwareEncoder) {
    constexpr int kPictures = 5;
    const VideoEncoderSettings settings{.size = {1280, 720},
                                        .pace = MovieSettings::Pace::RealTime,
                                        .transfer = MovieSettings::Transfer::SRGB,
                                        .bitRate = 12'000'000};
    keepFFmpegQuiet();
    const auto encoder = FFmpegHardwareEncoder::open(hardwareEncoder, settings);
    if (encoder == nullptr) return false;
    int coded = 0;
    const PacketSink count = [&](const EncodedPacket& packet) -> Result<void, MovieWriterError> {
        coded += packet.bytes.empty() ? 0 : 1;
        return {};
    };
    Picture picture(settings.size, Subsampling::Quarter);
    for (int index = 0; index < kPictures; ++index) {
        for (int plane = 0; plane < 3; ++plane)
            for (int y = 0; y < picture.plane(plane).height; ++y)
                std::fill_n(picture.plane(plane).row(y), picture.plane(plane).width,
                            static_cast<std::uint8_t>(40 * index + y % 40));
        if (!encoder->encode(picture, index * 1500, {}, count)) return false;
    }
    return encoder->drain(count) && coded == kPictures;
}

std::unique_ptr<FFmpegHardwareEncoder> FFmpegHardwareEncoder::open(const std::string& name,
                                                                   const VideoEncoderSettings& settings) {
    for (const Candidate& candidate : candidates()) {
        if (nameOf(candidate) != name) continue;
        const AVCodec* encoder = avcodec_find_encoder_by_name(candidate.codec);
        if (encoder == nullptr) return nullptr;
        CodecHandle codec(avcodec_alloc_context3(encoder));
        if (codec == nullptr) throw std::bad_alloc();
        setStream(*codec, settings);
        BufferHandle frames;
        if (!candidate.device.empty()) {
            frames = deviceFrames(candidate.device, settings.size);
            if (frames == nullptr) return nullptr;
            codec->pix_fmt = AV_PIX_FMT_VAAPI;
            codec->hw_frames_ctx = av_buffer_ref(frames.get());
        }
        for (const auto& [option, value] : candidate.options) av_opt_set(codec->priv_data, option, value, 0);
        if (avcodec_open2(codec.get(), encoder, nullptr) < 0) return nullptr;
        // The file's header is written before the first frame and needs the parameter sets.
        if (codec->extradata_size == 0) return nullptr;
        return std::unique_ptr<FFmpegHardwareEncoder>(
            new FFmpegHardwareEncoder(std::move(codec), std::move(frames), settings));
    }
    return nullptr;
}

std::span<const std::uint8_t> FFmpegHardwareEncoder::parameterSets() const {
    return {m_codec->extradata, static_cast<std::size_t>(m_codec->extradata_size)};
}

FrameHandle FFmpegHardwareEncoder::frameFrom(const Picture& picture) const {
    FrameHandle frame = newFrame();
    frame->format = kUploadFormat;
    frame->width = m_size.width;
    frame->height = m_size.height;
    if (av_frame_get_buffer(frame.get(), 0) < 0) throw std::bad_alloc();
    interleave(picture, *frame);
    if (m_deviceFrames == nullptr) return frame;

    FrameHandle uploaded = newFrame();
    if (av_hwframe_get_buffer(m_deviceFrames.get(), uploaded.get(), 0) < 0) return nullptr;
    if (av_hwframe_transfer_data(uploaded.get(), frame.get(), 0) < 0) return nullptr;
    return uploaded;
}

Result<void, MovieWriterError> FFmpegHardwareEncoder::encode(const Picture& picture, std::int64_t time,
                                                             std::span<const PixelBox>, const PacketSink& sink) {
    const FrameHandle frame = frameFrom(picture);
    if (frame == nullptr)
        return failure(MovieWriterError{MovieWriterError::Kind::EncodingFailed,
                                        "A frame could not be handed to the graphics hardware.", 0});
    frame->pts = time;
    if (std::exchange(m_isFirst, false) || time - m_lastKeyFrame >= m_keyFrameTicks) {
        frame->pict_type = AV_PICTURE_TYPE_I;
        m_lastKeyFrame = time;
    }
    return send(frame, sink);
}

Result<void, MovieWriterError> FFmpegHardwareEncoder::drain(const PacketSink& sink) { return send(nullptr, sink); }

Result<void, MovieWriterError> FFmpegHardwareEncoder::send(const FrameHandle& frame, const PacketSink& sink) {
    int code = avcodec_send_frame(m_codec.get(), frame.get());
    while (code >= 0) {
        code = avcodec_receive_packet(m_codec.get(), m_packet.get());
        if (code < 0) break;
        const EncodedPacket packet{.bytes = {m_packet->data, static_cast<std::size_t>(m_packet->size)},
                                   .presentationTime = m_packet->pts,
                                   .decodingTime = m_packet->dts,
                                   .isKeyFrame = (m_packet->flags & AV_PKT_FLAG_KEY) != 0};
        auto taken = sink(packet);
        av_packet_unref(m_packet.get());
        if (!taken) return taken;
    }
    if (code == AVERROR(EAGAIN) || code == AVERROR_EOF) return {};
    return failure(
        MovieWriterError{MovieWriterError::Kind::EncodingFailed,
                         fmt::format("The graphics hardware could not encode a frame: {}.", ffmpegReason(code)), 0});
}

} // namespace morvelin
