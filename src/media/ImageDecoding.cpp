#include "media/ImageDecoding.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <new>
#include <string>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

#include "media/FFmpegHandles.h"
#include "media/ImageOrientation.h"

namespace morvelin {

namespace {

constexpr std::uintmax_t kMostBytes = std::uintmax_t(64) << 20;
/// A small file can hold an enormous picture; decoded, this many pixels take at most some hundred MiB. Photos take the
/// least room for a pixel.
constexpr std::int64_t kMostPixels = std::int64_t(1) << 25;
constexpr std::int64_t kMostPhotoPixels = std::int64_t(1) << 27;
constexpr int kLongestSide = 32'767;

/// Whether a decoder must object to anything that it doesn't know.
enum class Decoding { Strict, Tolerant };

/// FFmpeg opens much that is no image, plain text among it, so the first bytes have to say what the file is.
struct Form {
    std::size_t offset;
    std::string_view bytes;
    const char* extension;
    const char* demuxer;
    std::int64_t mostPixels = kMostPixels;
    Decoding decoding = Decoding::Strict;
};
constexpr Form kForms[] = {{0, "\x89PNG\r\n\x1a\n", ".png", "png_pipe"},
                           {0, "\xff\xd8\xff", ".jpg", "jpeg_pipe", kMostPhotoPixels},
                           {8, "WEBP", ".webp", "webp_pipe"},
                           {4, "ftypheic", ".heic", "mov"},
                           {4, "ftypheix", ".heic", "mov"},
                           {4, "ftypmif1", ".heic", "mov"},
                           {4, "ftypavif", ".avif", "mov"},
                           {0, "GIF8", ".gif", "gif"},
                           {0, "BM", ".bmp", "bmp_pipe"},
                           // A strict decoder of TIFF stops at tags that nearly every file has.
                           {0, std::string_view("II*\0", 4), ".tiff", "tiff_pipe", kMostPixels, Decoding::Tolerant},
                           {0, std::string_view("MM\0*", 4), ".tiff", "tiff_pipe", kMostPixels, Decoding::Tolerant}};

const Form* formOf(const std::filesystem::path& file) {
    std::array<char, 16> head{};
    std::ifstream(file, std::ios::binary).read(head.data(), head.size());
    const std::string_view bytes(head.data(), head.size());
    const auto fits = [&](const Form& form) { return bytes.substr(form.offset).starts_with(form.bytes); };
    const auto* form = std::ranges::find_if(kForms, fits);
    return form != std::end(kForms) ? form : nullptr;
}

InputHandle openInput(const std::filesystem::path& file, const Form& form) {
    AVFormatContext* context = nullptr;
    // The prefix keeps a colon in the path from being read as a protocol.
    const int code = avformat_open_input(&context, ("file:" + file.string()).c_str(),
                                         av_find_input_format(form.demuxer), nullptr);
    return InputHandle(code < 0 ? nullptr : context);
}

CodecHandle openDecoder(const AVStream& stream, const Form& form) {
    return openedDecoder(stream, [&form](AVCodecContext& decoder) {
        decoder.max_pixels = form.mostPixels;
        // A picture with a part missing must not pass for the real one.
        if (form.decoding == Decoding::Strict) decoder.err_recognition |= AV_EF_EXPLODE;
    });
}

/// The file's first picture; null when it is damaged.
FrameHandle firstFrame(AVFormatContext& input, const Form& form) {
    const int best = av_find_best_stream(&input, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (best < 0) return nullptr;
    const CodecHandle decoder = openDecoder(*input.streams[best], form);
    if (decoder == nullptr) return nullptr;
    const PacketHandle packet = newPacket();
    FrameHandle frame = newFrame();
    int code = AVERROR(EAGAIN);
    while (code == AVERROR(EAGAIN)) {
        const bool isAtEnd = av_read_frame(&input, packet.get()) < 0;
        const bool isOurs = isAtEnd || packet->stream_index == best;
        if (isOurs && avcodec_send_packet(decoder.get(), isAtEnd ? nullptr : packet.get()) < 0) return nullptr;
        av_packet_unref(packet.get());
        if (isOurs) code = avcodec_receive_frame(decoder.get(), frame.get());
    }
    const bool isWhole = code >= 0 && frame->decode_error_flags == 0 && (frame->flags & AV_FRAME_FLAG_CORRUPT) == 0;
    return isWhole && std::max(frame->width, frame->height) <= kLongestSide ? std::move(frame) : nullptr;
}

/// The smallest size of the picture's form that covers `enough`; never larger than the picture.
PixelSize coveringSize(PixelSize picture, PixelSize enough) {
    const double scale = std::max(static_cast<double>(enough.width) / picture.width,
                                  static_cast<double>(enough.height) / picture.height);
    if (scale >= 1) return picture;
    const auto side = [&](int length) { return std::max(1, static_cast<int>(std::ceil(length * scale - 1e-6))); };
    return {side(picture.width), side(picture.height)};
}

bool isFullRange(const AVFrame& frame, const AVPixFmtDescriptor& form) {
    const bool isGrey = form.nb_components <= 2;
    return frame.color_range == AVCOL_RANGE_JPEG || std::string_view(form.name).starts_with("yuvj") ||
           (isGrey && frame.color_range != AVCOL_RANGE_MPEG);
}

bool hasAlpha(const AVPixFmtDescriptor& form) {
    return (form.flags & (AV_PIX_FMT_FLAG_ALPHA | AV_PIX_FMT_FLAG_PAL)) != 0;
}

/// The frame's pixels at another size, with its alpha as it is; empty when its form can't be converted.
Image pixelsOf(const AVFrame& frame, const AVPixFmtDescriptor& form, PixelSize size) {
    const auto format = static_cast<AVPixelFormat>(frame.format);
    const ScalerHandle scaler(sws_getContext(
        frame.width, frame.height, format, size.width, size.height, AV_PIX_FMT_BGRA,
        SWS_LANCZOS | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP, nullptr, nullptr, nullptr));
    if (scaler == nullptr) return {};
    // Stills that don't say otherwise are coded by the older matrix, whatever their size.
    const int matrix = frame.colorspace == AVCOL_SPC_UNSPECIFIED ? SWS_CS_ITU601 : frame.colorspace;
    constexpr int kNeutral = 1 << 16;
    sws_setColorspaceDetails(scaler.get(), sws_getCoefficients(matrix), isFullRange(frame, form) ? 1 : 0,
                             sws_getCoefficients(SWS_CS_ITU709), 1, 0, kNeutral, kNeutral);
    Image image{size, std::vector<std::uint8_t>(4 * static_cast<std::size_t>(size.width) *
                                                static_cast<std::size_t>(size.height))};
    const std::array<std::uint8_t*, 4> planes{image.pixels.data()};
    const std::array<int, 4> strides{4 * size.width};
    const int rows = sws_scale(scaler.get(), frame.data, frame.linesize, 0, frame.height, planes.data(),
                               strides.data());
    return rows == size.height ? image : Image{};
}

void premultiply(Image& image) {
    for (std::size_t pixel = 0; pixel + 3 < image.pixels.size(); pixel += 4)
        if (const unsigned alpha = image.pixels[pixel + 3]; alpha != 255)
            for (std::size_t channel = pixel; channel < pixel + 3; ++channel)
                image.pixels[channel] = static_cast<std::uint8_t>((image.pixels[channel] * alpha + 127) / 255);
}

/// An image's pixels as a frame, which must not outlive it.
FrameHandle frameOver(Image& image) {
    FrameHandle frame = newFrame();
    frame->width = image.size.width;
    frame->height = image.size.height;
    frame->format = AV_PIX_FMT_BGRA;
    frame->data[0] = image.pixels.data();
    frame->linesize[0] = 4 * image.size.width;
    return frame;
}

Image reduced(const AVFrame& frame, PixelSize size) {
    const AVPixFmtDescriptor* form = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    if (form == nullptr) return {};
    if (!hasAlpha(*form)) return pixelsOf(frame, *form, size);
    // Scaled with its alpha apart, what is transparent would shine through at its edges.
    Image whole = pixelsOf(frame, *form, {frame.width, frame.height});
    premultiply(whole);
    if (whole.isEmpty() || whole.size == size) return whole;
    return pixelsOf(*frameOver(whole), *av_pix_fmt_desc_get(AV_PIX_FMT_BGRA), size);
}

} // namespace

std::optional<DecodedImage> decodeImage(const std::filesystem::path& file, PixelSize enough) {
    keepFFmpegQuiet();
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error) || std::filesystem::file_size(file, error) > kMostBytes)
        return std::nullopt;
    const Form* form = formOf(file);
    const InputHandle input = form != nullptr ? openInput(file, *form) : nullptr;
    const FrameHandle frame = input != nullptr ? firstFrame(*input, *form) : nullptr;
    if (frame == nullptr) return std::nullopt;

    const ImageOrientation orientation = orientationOf(*frame);
    const PixelSize size{frame->width, frame->height};
    const Image image = reduced(*frame, coveringSize(size, orientation.turned(enough)));
    if (image.isEmpty()) return std::nullopt;
    return DecodedImage{upright(image, orientation), orientation.turned(size), form->extension};
}

} // namespace morvelin
