#include "media/FrameConversion.h"

#include <array>
#include <utility>

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

namespace morvelin {

namespace {

constexpr int kLargestHeightOfBT601 = 576;

/// The matrix of a frame; what does not say is taken by its size, as players do.
AVColorSpace matrixOf(const AVFrame& frame) {
    if (frame.colorspace != AVCOL_SPC_UNSPECIFIED && frame.colorspace != AVCOL_SPC_RESERVED) return frame.colorspace;
    return frame.height > kLargestHeightOfBT601 ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
}

bool isFullRange(const AVFrame& frame) {
    return frame.color_range == AVCOL_RANGE_JPEG || frame.format == AV_PIX_FMT_YUVJ420P ||
           frame.format == AV_PIX_FMT_YUVJ422P || frame.format == AV_PIX_FMT_YUVJ444P;
}

bool hasOurForm(const AVFrame& frame) {
    return frame.format == AV_PIX_FMT_YUV420P && !isFullRange(frame) && matrixOf(frame) == AVCOL_SPC_BT709;
}

/// An odd last column or row is left out: our 4:2:0 has even sides.
PixelSize evenSize(PixelSize size) { return {size.width & ~1, size.height & ~1}; }

std::shared_ptr<Picture> wrapped(FrameHandle frame) {
    const PixelSize size = evenSize({frame->width, frame->height});
    std::array<PlaneView<std::uint8_t>, 3> planes;
    for (std::size_t index = 0; index < planes.size(); ++index) {
        const int divisor = index == 0 ? 1 : 2;
        planes[index] = {frame->data[index], frame->linesize[index], size.width / divisor, size.height / divisor};
    }
    std::shared_ptr<AVFrame> owner(frame.release(), FreeFFmpeg{});
    return std::make_shared<Picture>(size, Subsampling::Quarter, planes, std::move(owner));
}

void rotatePlane(PlaneView<const std::uint8_t> source, PlaneView<std::uint8_t> target, int quarterTurns) {
    for (int y = 0; y < target.height; ++y) {
        std::uint8_t* row = target.row(y);
        for (int x = 0; x < target.width; ++x) {
            switch (quarterTurns) {
            case 1: row[x] = source.row(source.height - 1 - x)[y]; break;
            case 2: row[x] = source.row(source.height - 1 - y)[source.width - 1 - x]; break;
            case 3: row[x] = source.row(x)[source.width - 1 - y]; break;
            default: row[x] = source.row(y)[x]; break;
            }
        }
    }
}

} // namespace

PixelSize FrameConverter::shownSize(PixelSize coded) const {
    const PixelSize even = evenSize(coded);
    return m_quarterTurns % 2 == 0 ? even : PixelSize{even.height, even.width};
}

std::shared_ptr<const Picture> FrameConverter::convert(FrameHandle frame) {
    std::shared_ptr<Picture> picture = hasOurForm(*frame) ? wrapped(std::move(frame)) : converted(*frame);
    if (picture == nullptr || m_quarterTurns == 0) return picture;
    return std::make_shared<Picture>(rotated(*picture, m_quarterTurns));
}

std::shared_ptr<Picture> FrameConverter::converted(const AVFrame& frame) {
    const PixelSize size = evenSize({frame.width, frame.height});
    const auto format = static_cast<AVPixelFormat>(frame.format);
    m_scaler.reset(sws_getCachedContext(m_scaler.release(), size.width, size.height, format, size.width, size.height,
                                        AV_PIX_FMT_YUV420P, SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INP,
                                        nullptr, nullptr, nullptr));
    if (m_scaler == nullptr) return nullptr;
    constexpr int kNeutral = 1 << 16;
    sws_setColorspaceDetails(m_scaler.get(), sws_getCoefficients(matrixOf(frame)), isFullRange(frame) ? 1 : 0,
                             sws_getCoefficients(SWS_CS_ITU709), 0, 0, kNeutral, kNeutral);

    auto picture = std::make_shared<Picture>(size, Subsampling::Quarter);
    std::array<std::uint8_t*, 4> planes{};
    std::array<int, 4> strides{};
    for (std::size_t index = 0; index < 3; ++index) {
        const PlaneView<std::uint8_t> plane = picture->plane(static_cast<int>(index));
        planes[index] = plane.data;
        strides[index] = static_cast<int>(plane.stride);
    }
    const int rows = sws_scale(m_scaler.get(), frame.data, frame.linesize, 0, size.height, planes.data(),
                               strides.data());
    return rows == size.height ? picture : nullptr;
}

Picture rotated(const Picture& picture, int quarterTurns) {
    const PixelSize size = picture.size();
    Picture turned(quarterTurns % 2 == 0 ? size : PixelSize{size.height, size.width}, picture.subsampling());
    for (int index = 0; index < 3; ++index) rotatePlane(picture.plane(index), turned.plane(index), quarterTurns);
    return turned;
}

} // namespace morvelin
