#include "media/CameraPictures.h"

#include <array>
#include <limits>
#include <utility>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/frame.h>
#include <libavutil/imgutils.h>
}

namespace morvelin {

namespace {

AVPixelFormat formatOf(CameraPixels pixels) {
    switch (pixels) {
    case CameraPixels::YUYV: return AV_PIX_FMT_YUYV422;
    case CameraPixels::UYVY: return AV_PIX_FMT_UYVY422;
    case CameraPixels::NV12: return AV_PIX_FMT_NV12;
    case CameraPixels::I420: return AV_PIX_FMT_YUV420P;
    case CameraPixels::RGB: return AV_PIX_FMT_RGB24;
    case CameraPixels::BGR: return AV_PIX_FMT_BGR24;
    case CameraPixels::RGBX: return AV_PIX_FMT_RGB0;
    case CameraPixels::BGRX: return AV_PIX_FMT_BGR0;
    case CameraPixels::MotionJPEG: return AV_PIX_FMT_NONE;
    }
    std::unreachable();
}

/// The rows of all planes when those of the first have this stride; drivers pad the others in proportion.
bool layOut(const CameraBytes& bytes, AVFrame& frame) {
    const auto format = formatOf(bytes.pixels);
    if (bytes.size.width < 2 || bytes.size.height < 2 ||
        av_image_fill_linesizes(frame.linesize, format, bytes.size.width) < 0)
        return false;
    if (bytes.stride > std::numeric_limits<int>::max() || (bytes.stride != 0 && bytes.stride < frame.linesize[0]))
        return false;
    if (bytes.stride > frame.linesize[0]) {
        const double padding = static_cast<double>(bytes.stride) / frame.linesize[0];
        for (int& line : frame.linesize) line = static_cast<int>(line * padding);
    }
    // Only read from: FFmpeg's frame has no word for that.
    auto* data = const_cast<std::uint8_t*>(bytes.bytes.data());
    const int size = av_image_fill_pointers(frame.data, format, bytes.size.height, data, frame.linesize);
    if (size < 0 || static_cast<std::size_t>(size) > bytes.bytes.size()) return false;
    frame.format = format;
    frame.width = bytes.size.width;
    frame.height = bytes.size.height;
    return true;
}

} // namespace

std::shared_ptr<const Picture> CameraPictures::picture(const CameraBytes& bytes) {
    FrameHandle frame = bytes.pixels == CameraPixels::MotionJPEG ? decoded(bytes.bytes) : newFrame();
    if (frame == nullptr) return nullptr;
    if (bytes.pixels != CameraPixels::MotionJPEG && !layOut(bytes, *frame)) return nullptr;
    return m_converter.convert(std::move(frame));
}

FrameHandle CameraPictures::decoded(std::span<const std::uint8_t> jpeg) {
    if (m_decoder == nullptr) {
        const AVCodec* codec = avcodec_find_decoder(AV_CODEC_ID_MJPEG);
        m_decoder.reset(avcodec_alloc_context3(codec));
        m_decoder->thread_count = 1;
        if (avcodec_open2(m_decoder.get(), codec, nullptr) < 0) m_decoder.reset();
        if (m_decoder == nullptr) return nullptr;
    }
    PacketHandle packet = newPacket();
    if (av_new_packet(packet.get(), static_cast<int>(jpeg.size())) < 0) return nullptr;
    std::copy(jpeg.begin(), jpeg.end(), packet->data);
    FrameHandle frame = newFrame();
    if (avcodec_send_packet(m_decoder.get(), packet.get()) < 0) return nullptr;
    if (avcodec_receive_frame(m_decoder.get(), frame.get()) < 0) return nullptr;
    return frame;
}

} // namespace morvelin
